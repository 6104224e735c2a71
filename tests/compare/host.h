// The host of a program while it runs: the library, memory that variables are linked to, and what callbacks
// saw.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compare/library.h"

namespace qumel::compare {

/** Variables are linked to places in here. Numbers, complex numbers and arrays lie over each other on
 * purpose, so that several names stand for one value. */
struct HostMemory {
  static constexpr std::size_t kNumbers = 24, kFlags = 8, kTextRoom = 64;
  double numbers[kNumbers];
  unsigned char flags[kFlags];  // truth values, into which a setter of another type may write any byte
  char text[kTextRoom];

  void Reset();
  std::string Shown() const;
};

struct Host {
  Library const& library;
  HostMemory memory{};
  Handle expression = 0;       // parsed from the program; 0 while it runs as text
  std::vector<Handle> kept{};  // whose references are given back when the context goes
  std::string calls{};         // what callbacks and the error callback saw since the last observation
  int depth = 0;               // of callbacks that run their own program again
  int rerunsLeft = 0;          // until the next observation; without a limit such programs may never end

  void Note(std::string_view event);
};

/** What callback operators do besides reading all their parameters. */
enum class Behaviour {
  Answer,
  AnswerComplex,
  AnswerSometimes,
  FailAsHost,
  FailAsLibrary,
  Stop,
  ReadWrongly,
  SetVariable,
  Evaluate,
  Promote,
  DeleteVariable,
  DeleteOperator,
  Redefine,
  RunAgain,
  DeleteExpression,
};
constexpr int kBehaviours = 15;

/** The code that callbacks fail with; programs may define a text for it. */
constexpr std::int32_t kHostError = 10001;

using Callback = std::int32_t (*)(Handle handle);
Callback CallbackFor(Behaviour behaviour);

/** Callbacks act for this host from now on. */
void BecomeHost(Host& host);
/** For qmSetErrorCallback. */
void NoteError(long code);

/** The bits of a value, in hexadecimal digits. */
std::string Bits(double value);
/** A text on one line: control characters and bytes beyond ASCII as escapes, null as a word. */
std::string Escaped(char const* text);

}  // namespace qumel::compare
