// What callbacks of the programs do, and how values are written into records.
#include "compare/host.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <utility>

namespace qumel::compare {

namespace {

constexpr std::size_t kLongestLog = 2000;
constexpr int kDeepestCallback = 2;  // of callbacks that run their own program again

Host* g_host = nullptr;

std::string ParameterShown(Library const& library, Handle handle, long index, char type) {
  switch (type) {
    case 'N': return Bits(library.qmGetNumParm(handle, index));
    case 'C':
      return Bits(library.qmGetRealParm(handle, index)) + "," + Bits(library.qmGetImagParm(handle, index));
    case 'B': return library.qmGetBoolParm(handle, index) ? "true" : "false";
    case 'S': return "\"" + Escaped(library.qmGetStrParm(handle, index)) + "\"";
    default: return "none";
  }
}

/** A number made of all parameters, so that results depend on every one. */
double Gather(Library const& library, Handle handle) {
  double sum = 0.5;
  for (long i = 0; i < library.qmGetParmCount(handle); ++i) {
    switch (library.qmGetParmType(handle, i)) {
      case 'N':
      case 'C': sum += library.qmGetRealParm(handle, i) - 2 * library.qmGetImagParm(handle, i); break;
      case 'B': sum += library.qmGetBoolParm(handle, i) ? 1 : 0; break;
      case 'S': {
        char const* const text = library.qmGetStrParm(handle, i);
        sum += text == nullptr ? 0 : static_cast<double>(std::strlen(text));
        break;
      }
      default: break;
    }
  }
  return sum;
}

/** Sets a result of whatever type the operator returns. */
long SetAnyResult(Library const& library, Handle handle, double value) {
  if (library.qmSetNumResult(handle, value) == 0) return 0;
  if (library.qmSetBoolResult(handle, value > 2) == 0) return 0;
  return library.qmSetStrResult(handle, Bits(value).c_str());
}

void RunAgain(Host& host) {
  if (host.depth >= kDeepestCallback || host.rerunsLeft-- <= 0) return;
  ++host.depth;
  double const value = host.expression != 0 ? host.library.qmEvalExpHndlToNum(host.expression)
                                            : host.library.qmEvalExpStrToNum("x + 1");
  --host.depth;
  host.Note("ran again " + Bits(value) + " " + std::to_string(host.library.qmGetLastErrorID()));
}

void Perform(Host& host, Handle handle, Behaviour behaviour, double value) {
  Library const& library = host.library;
  switch (behaviour) {
    case Behaviour::ReadWrongly:
      host.Note(Bits(library.qmGetNumParm(handle, 0)) + "," + Escaped(library.qmGetStrParm(handle, 1)) + "," +
                Bits(library.qmGetImagParm(handle, -1)) +
                (library.qmGetBoolParm(handle, 0) ? ",true" : ",false"));
      break;
    case Behaviour::SetVariable: host.Note(library.qmSetNumVar('x', "x", value) ? "set" : "not set"); break;
    case Behaviour::Evaluate: host.Note(Bits(library.qmEvalExpStrToNum("x = x + 1; x * 2"))); break;
    case Behaviour::Promote:
      library.qmSetAllowComplexResults(true);
      host.Note(std::string(1, library.qmEvalExpStr("y = sqrt(-4)")));
      break;
    case Behaviour::DeleteVariable: host.Note(std::to_string(library.qmDeleteVar('G', "z"))); break;
    case Behaviour::DeleteOperator: host.Note(std::to_string(library.qmDeleteOp('G', "f"))); break;
    case Behaviour::Redefine:
      host.Note(std::to_string(library.qmDeleteOp('G', "g")));
      host.Note(
          std::to_string(library.qmDefineExpOp('G', "g", "prefix", "number", "number a", nullptr, "a * 7")));
      break;
    case Behaviour::RunAgain: RunAgain(host); break;
    case Behaviour::DeleteExpression: library.qmDeleteExp(host.expression); break;
    default: break;
  }
}

std::int32_t Call(Handle handle, Behaviour behaviour) {
  Host& host = *g_host;
  Library const& library = host.library;
  char const* const signature = library.qmGetParmSig(handle);
  std::string event = "call " + Escaped(signature);
  for (long i = 0; signature != nullptr && signature[i] != '\0'; ++i)
    event += " " + ParameterShown(library, handle, i, signature[i]);
  host.Note(event);
  double const value = Gather(library, handle);
  Perform(host, handle, behaviour, value);
  bool const isLarge = value > 3;  // for some calls and not for others
  switch (behaviour) {
    case Behaviour::AnswerSometimes:
      if (!isLarge) return 0;
      break;
    case Behaviour::FailAsHost: return kHostError;
    case Behaviour::FailAsLibrary: return QMErrorDivisionByZero;
    case Behaviour::Stop: SetAnyResult(library, handle, value); return QMErrorStop;
    case Behaviour::AnswerComplex:
      library.qmSetRealResult(handle, value);
      return isLarge ? static_cast<std::int32_t>(library.qmSetImagResult(handle, value / 4)) : 0;
    default: break;
  }
  return static_cast<std::int32_t>(SetAnyResult(library, handle, value));
}

template <int behaviour>
std::int32_t CallFor(Handle handle) {
  return Call(handle, static_cast<Behaviour>(behaviour));
}

template <int... behaviours>
constexpr std::array<Callback, sizeof...(behaviours)> CallbacksFor(
    std::integer_sequence<int, behaviours...> /*all*/) {
  return {&CallFor<behaviours>...};
}

}  // namespace

void HostMemory::Reset() {
  for (std::size_t i = 0; i < kNumbers; ++i) numbers[i] = static_cast<double>(i) * 0.75 - 2;
  for (std::size_t i = 0; i < kFlags; ++i) flags[i] = i % 2 == 1 ? 1 : 0;
  std::memset(text, 0, sizeof text);
  std::strcpy(text, "memory");
  std::strcpy(text + kTextRoom / 2, "of the host");
}

std::string HostMemory::Shown() const {
  std::string shown;
  for (double const number : numbers) shown += Bits(number) + " ";
  auto const addByte = [&](unsigned char byte) {
    constexpr char const* digits = "0123456789abcdef";
    shown += {digits[byte >> 4], digits[byte & 15]};
  };
  for (unsigned char const flag : flags) addByte(flag);
  for (char const letter : text) addByte(static_cast<unsigned char>(letter));
  return shown;
}

void Host::Note(std::string_view event) {
  if (calls.size() < kLongestLog) calls.append(calls.empty() ? "" : "; ").append(event);
}

Callback CallbackFor(Behaviour behaviour) {
  static constexpr auto kCallbacks = CallbacksFor(std::make_integer_sequence<int, kBehaviours>());
  return kCallbacks[static_cast<std::size_t>(behaviour)];
}

void BecomeHost(Host& host) { g_host = &host; }
void NoteError(long code) { g_host->Note("error " + std::to_string(code)); }

std::string Bits(double value) {
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx",
                static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
  return digits;
}

std::string Escaped(char const* text) {
  if (text == nullptr) return "(null)";
  std::string escaped;
  for (; *text != '\0'; ++text) {
    auto const byte = static_cast<unsigned char>(*text);
    char escape[5];
    if (*text == '\n') escaped += "\\n";
    else if (*text == '\t') escaped += "\\t";
    else if (byte < 0x20 || byte >= 0x7F) {
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte));
      escaped += escape;
    } else escaped += *text;
  }
  return escaped;
}

}  // namespace qumel::compare
