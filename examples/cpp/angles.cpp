// Formulas in a C++ program: owners for handles, errors as exceptions, operators of its own, and contexts
// with settings of their own in several threads.
// Build it with: c++ angles.cpp -pthread $(pkg-config --cflags --libs qumel)
#include <qumel/qumel.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

// An error of the library, with its code and text. The last error belongs to the current context.
struct Failure : std::runtime_error {
  Failure() : std::runtime_error(qmGetLastErrorText()), code(qmGetLastErrorID()) {}
  long code;
};

void Check(bool succeeded) {
  if (!succeeded) throw Failure();
}

std::string Evaluate(std::string const& text) {
  char const* const result = qmEvalExpStrToStr(text.c_str());
  Check(qmGetLastErrorID() == QMErrorNone);
  return result;  // a copy: the library's own text lives until the next evaluation
}

// What is evaluated often is parsed once; the parsed expression goes with its owner.
class Expression {
 public:
  explicit Expression(std::string const& text) : m_handle(qmParseExp(text.c_str())) { Check(m_handle != 0); }
  ~Expression() { qmDeleteExp(m_handle); }
  Expression(Expression const&) = delete;
  Expression& operator=(Expression const&) = delete;

  double Evaluate() const {
    double const result = qmEvalExpHndlToNum(m_handle);
    Check(qmGetLastErrorID() == QMErrorNone);
    return result;
  }

 private:
  unsigned long long m_handle;
};

// A private context, current in this thread while its owner lives.
class Context {
 public:
  explicit Context(std::string name) : m_name(std::move(name)) {
    Check(qmCreatePrivateContext(m_name.c_str()) != 0);
    Check(qmSetContext(m_name.c_str(), false) != 0);
  }
  ~Context() { qmDestroyPrivateContext(m_name.c_str()); }
  Context(Context const&) = delete;
  Context& operator=(Context const&) = delete;

 private:
  std::string m_name;
};

// A callback must not throw: errors are codes, and codes above 9999 are the program's own.
constexpr long kNothingToRepeat = 10001;

std::int32_t Repeat(unsigned long long handle) {
  std::string const text = qmGetStrParm(handle, 0);
  if (text.empty()) return kNothingToRepeat;
  std::string result;
  for (int i = std::clamp(static_cast<int>(qmGetNumParm(handle, 1)), 0, 20); i > 0; --i) result += text;
  return static_cast<std::int32_t>(qmSetStrResult(handle, result.c_str()));
}

// Scope 'C' makes operators known to all contexts, so they are defined before threads start to evaluate.
void DefineOperators() {
  // A C++ function, written between its operands: "ab" times 3. It binds like a multiplication.
  Check(qmLinkCallbackOp('C', "times", "infix", "string", "string text, number count", "*", Repeat) ==
        QMErrorNone);
  Check(qmDefineError('C', kNothingToRepeat, "nothing to repeat"));
  // Expressions over their parameters. The second one calls itself, so that it is declared before its body.
  Check(qmDefineExpOp('C', "slope", "prefix", "number", "number run, number rise", nullptr,
                      "arctan(rise / run)") == QMErrorNone);
  Check(qmDefineExpOp('C', "fib", "prefix", "number", "number n", nullptr, nullptr) == QMErrorNone);
  Check(qmDefineExpOpStr('C', "fib", "if (n < 2) then return n; end return (fib(n - 1) + fib(n - 2))") ==
        QMErrorNone);
}

// The same formula under the settings of a context of its own.
struct Survey {
  char unit;  // 'D' degrees, 'R' radians, 'G' gradians
  std::vector<double> rises;
  std::vector<double> angles;
  std::string failure;
};

void Measure(Survey& survey) try {
  Context const context("survey");
  qmSetAngleUnit(survey.unit);
  double rise = 0;
  Check(qmLinkNumVar('G', "rise", &rise));  // the formula reads this very variable
  Expression const angle("slope(10, rise)");
  for (double const next : survey.rises) {
    rise = next;
    survey.angles.push_back(angle.Evaluate());
  }
} catch (std::exception const& failure) {
  survey.failure = failure.what();
}

}  // namespace

int main() try {
  Check(qmInitialize("angles"));
  DefineOperators();
  qmSetFormattedResultPrecisionLimit(2);
  std::cout << Evaluate("\"-\" times 3 $+ \">\"") << ' ' << Evaluate("fib(15)") << '\n';

  for (std::string const text : {"\"\" times 2", "slope(0, 1)", "slope(1, 2))"}) {
    try {
      Evaluate(text);
    } catch (Failure const& failure) {
      std::cout << text << ": error " << failure.code << ", " << failure.what() << '\n';
    }
  }

  std::vector<Survey> surveys{{'D', {0, 10}, {}, {}}, {'R', {0, 10}, {}, {}}, {'G', {0, 10}, {}, {}}};
  std::vector<std::thread> threads;
  for (Survey& survey : surveys) threads.emplace_back(Measure, std::ref(survey));
  for (std::thread& thread : threads) thread.join();
  for (Survey const& survey : surveys) {
    std::cout << survey.unit << ':' << survey.failure;
    for (double const angle : survey.angles) std::cout << ' ' << angle;
    std::cout << '\n';
  }
  qmUnloadQumel();
  return EXIT_SUCCESS;
} catch (std::exception const& failure) {
  std::cerr << failure.what() << '\n';
  return EXIT_FAILURE;
}

/* Prints:
---> 610.00
"" times 2: error 10001, nothing to repeat
slope(0, 1): error 3110, Executor: division by zero attempted
slope(1, 2)): error 2060, Postfixer: missing left parenthesis
D: 0 45
R: 0 0.785398
G: 0 50
*/
