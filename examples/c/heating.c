/* Formulas in a C program: operators of its own, its variables in formulas, errors, and a context for each
 * thread. Build it with: cc heating.c -pthread $(pkg-config --cflags --libs qumel) */
#include <pthread.h>
#include <qumel/qumel.h>
#include <stdio.h>
#include <stdlib.h>

/* Ends the program when a call of the library failed. The last error belongs to the current context. */
static void must(bool succeeded, char const* what) {
  if (succeeded) return;
  fprintf(stderr, "%s: %s (%ld)\n", what, qmGetLastErrorText(), qmGetLastErrorID());
  exit(EXIT_FAILURE);
}

/* An operator that is a C function: limited(value, lowest, highest). It reads its parameters and sets its
 * result by the handle; what it returns other than 0 ends the evaluation as an error. */
static int32_t limited(unsigned long long handle) {
  double const value = qmGetNumParm(handle, 0);
  double const lowest = qmGetNumParm(handle, 1);
  double const highest = qmGetNumParm(handle, 2);
  if (lowest > highest) return QMErrorResultNotDefined;
  qmSetNumResult(handle, value < lowest ? lowest : value > highest ? highest : value);
  return 0;
}

/* Scope 'C' makes operators known to all contexts, so they are defined before threads start to evaluate. */
static void define_operators(void) {
  must(qmLinkCallbackOp('C', "limited", "prefix", "number", "number value, number lowest, number highest",
                        NULL, limited) == QMErrorNone,
       "limited");
  /* An operator that is an expression over its parameter, written behind its operand: 68 fahrenheit. */
  must(qmDefineExpOp('C', "fahrenheit", "postfix", "number", "number f", NULL, "(f - 32) / 1.8") ==
           QMErrorNone,
       "fahrenheit");
}

/* Formulas read and write the program's own memory, which stays in place as long as the context. */
static double outside;
static double heating;
static bool away;
static char mode[16] = "comfort";

static void evaluate_once(void) {
  must(qmLinkNumVar('G', "outside", &outside), "outside");
  must(qmLinkNumVar('G', "heating", &heating), "heating");
  must(qmLinkBoolVar('G', "away", &away), "away");
  must(qmLinkStrVar('G', "mode", mode, sizeof mode), "mode");

  /* The result as a number, and as a text with the digits that the context is set to. */
  double const freezing = qmEvalExpStrToNum("32 fahrenheit");
  must(qmGetLastErrorID() == QMErrorNone, "freezing");
  qmSetFormattedResultPrecisionLimit(1);
  char const* const warm = qmEvalExpStrToStr("68 fahrenheit");
  must(qmGetLastErrorID() == QMErrorNone, "warm");
  printf("freezing at %.0f, warm at %s\n", freezing, warm);

  /* An assignment changes the program's variable. */
  qmEvalExpStr("away = outside > 100; mode = \"frost\"");
  must(qmGetLastErrorID() == QMErrorNone, "assignment");
  printf("away %d, mode %s\n", away, mode);
}

/* What is evaluated often is parsed once. */
static void evaluate_parsed(void) {
  unsigned long long const formula = qmParseExp("heating = limited(5 * (20 - outside), 0, 100)");
  must(formula != 0, "formula");
  for (outside = -10; outside <= 30; outside += 20) {
    double const power = qmEvalExpHndlToNum(formula);
    must(qmGetLastErrorID() == QMErrorNone, "power");
    printf("outside %.0f: heating %.0f, %s\n", outside, power, heating == power ? "stored" : "not stored");
  }
  qmDeleteExp(formula);
}

static void show_errors(void) {
  char const* const texts[] = {"limited(1, 2, 0)", "10 / 0", "2 * )"};
  for (size_t i = 0; i < sizeof texts / sizeof *texts; ++i) {
    qmEvalExpStr(texts[i]);
    printf("%s: error %ld, %s\n", texts[i], qmGetLastErrorID(), qmGetLastErrorText());
  }
}

/* A room, worked on by a thread of its own. */
struct room {
  double target;
  double total;
};

/* Threads with contexts of their own evaluate side by side without care for each other: a private context is
 * seen by its thread only, so that all may use the same names. */
static void* heat_room(void* argument) {
  struct room* const room = argument;
  must(qmCreatePrivateContext("room") != 0 && qmSetContext("room", false) != 0, "room");
  must(qmLinkNumVar('G', "target", &room->target), "target");
  must(qmLinkNumVar('G', "total", &room->total), "total");
  unsigned long long const formula = qmParseExp("total += limited(target - 68 fahrenheit, 0, 3)");
  must(formula != 0, "room's formula");
  for (int hour = 0; hour < 24; ++hour) {
    qmEvalExpHndl(formula);
    must(qmGetLastErrorID() == QMErrorNone, "room's sum");
  }
  qmDeleteExp(formula);
  must(qmDestroyPrivateContext("room"), "room's end");
  return NULL;
}

int main(void) {
  must(qmInitialize("heating"), "start");
  define_operators();
  evaluate_once();
  evaluate_parsed();
  show_errors();

  struct room rooms[] = {{.target = 19}, {.target = 21}, {.target = 25}};
  enum { kRooms = sizeof rooms / sizeof *rooms };
  pthread_t threads[kRooms];
  for (int i = 0; i < kRooms; ++i) {
    if (pthread_create(&threads[i], NULL, heat_room, &rooms[i]) != 0) return EXIT_FAILURE;
  }
  for (int i = 0; i < kRooms; ++i) {
    pthread_join(threads[i], NULL);
    printf("room at %.0f: %.0f\n", rooms[i].target, rooms[i].total);
  }
  qmUnloadQumel();
  return EXIT_SUCCESS;
}

/* Prints:
freezing at 0, warm at 20.0
away 0, mode frost
outside -10: heating 100, stored
outside 10: heating 50, stored
outside 30: heating 0, stored
limited(1, 2, 0): error 3150, Executor: result is not defined
10 / 0: error 3110, Executor: division by zero attempted
2 * ): error 2030, Postfixer: add operator failed
room at 19: 0
room at 21: 24
room at 25: 72
*/
