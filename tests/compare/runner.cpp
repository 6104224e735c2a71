// Running programs.
#include "compare/runner.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <stdexcept>

#include "compare/generator.h"
#include "compare/typed_calls.h"

namespace qumel::compare {

namespace {

constexpr char const* kContext = "compare";
constexpr int kReruns = 6;

std::string Answer(bool value) { return value ? "true" : "false"; }

/** Words of a text that may be names. */
void AddWords(std::string const& text, std::set<std::string>& words) {
  std::string word;
  for (char const letter : text + " ") {
    bool const isPart = std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_';
    if (isPart) word += letter;
    if (isPart || word.empty()) continue;
    if (std::isdigit(static_cast<unsigned char>(word[0])) == 0) words.insert(word);
    word.clear();
  }
}

/** Names of variables and operators that the program may leave behind. */
std::set<std::string> NamesOf(Program const& program, OperatorForms const& forms) {
  std::set<std::string> names = program.names;
  AddWords(Join(program.pieces), names);
  for (Act const& act : program.preparations) AddWords(act.shown, names);
  for (Acts const& acts : program.changes)
    for (Act const& act : acts) AddWords(act.shown, names);
  for (std::string const& token : forms.tokens) names.erase(token);
  return names;
}

/** An annotated text with the ids of host operators counted from 1 in it: they count all operators that the
 * process ever had. */
std::string WithOwnIds(char const* annotated) {
  std::string const text = Escaped(annotated);
  std::map<std::string, std::size_t> numbers;
  std::string renumbered;
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::size_t const end = std::min(text.find_first_not_of("0123456789", at + 1), text.size());
    if (text[at] != '!' || end - at < 6) {
      renumbered += text[at];
      continue;
    }
    auto const number = numbers.emplace(text.substr(at + 1, end - at - 1), numbers.size() + 1).first->second;
    renumbered += "!own" + std::to_string(number);
    at = end - 1;
  }
  return renumbered;
}

}  // namespace

Runner::Runner(Library const& library, OperatorForms const& forms, std::uint64_t seed)
    : m_library(library), m_forms(forms), m_seed(seed), m_host{library} {
  if (!library.qmInitialize("")) throw std::runtime_error("the library does not start");
  BecomeHost(m_host);
  // what the library makes once is not to be counted with the first program
  OpenContext({});
  library.qmEvalExpStr("cosmic x = 1; x + 1");
  m_names = {"x"};
  CloseContext();
}

// ---- contexts ----

void Runner::OpenContext(Settings const& settings) {
  m_objectsBefore = m_library.qmGetQumelObjectCount();
  m_isPrivate = settings.isPrivate;
  m_library.qmClearContext();
  m_library.qmSetRadixMark(settings.radixMark);
  m_library.qmSetQuoteMark(settings.quoteMark);
  m_library.qmSetBooleanTrue(settings.booleanTrue);
  m_library.qmSetAllowImpliedMult(settings.allowsImpliedMultiplication);
  m_library.qmSetInvertArrayIndices(settings.invertsIndices);
  m_library.qmSetAngleUnit(settings.angleUnit);
  m_library.qmSetOutputBase(settings.outputBase);
  m_library.qmSetCoordinateFormat(settings.coordinateFormat);
  m_library.qmSetDefaultVariableScope(settings.defaultScope);
  m_library.qmSetFormattedResultPrecisionLimit(settings.precision);
  m_library.qmSetAllowComplexResults(settings.allowsComplex);
  if (settings.forcesComplex) m_library.qmSetForceComplexResults();
  if (settings.isPrivate) m_library.qmCreatePrivateContext(kContext);
  else m_library.qmCreatePublicContext(kContext);
  m_library.qmSetContext(kContext, false);
  m_library.qmSetErrorCallback(&NoteError);
}

void Runner::CloseContext() {
  if (m_isPrivate) m_library.qmDestroyPrivateContext(kContext);
  else m_library.qmDestroyPublicContext(kContext);
  m_openBlock = kNone;
  for (Handle const handle : m_host.kept) m_library.qmReleaseVarHandle(handle);
  m_host.kept.clear();
  for (std::string const& name : m_names) {
    m_library.qmDeleteOp('C', name.c_str());
    m_library.qmDeleteVar('C', name.c_str());
  }
  m_names.clear();
  Line("objects", std::to_string(m_library.qmGetQumelObjectCount() - m_objectsBefore));
}

// ---- records ----

void Runner::Line(std::string const& label, std::string const& content) {
  m_record += label + "\t" + content + "\n";
}

void Runner::Observe(std::string const& label, std::string const& answer) {
  Line(label, "code=" + std::to_string(m_library.qmGetLastErrorID()) + "\tanswer=" + answer +
                  "\ttype=" + Escaped(std::string(1, m_library.qmGetLastResultType()).c_str()) +
                  "\tnumber=" + Bits(m_library.qmGetLastNumResult()) +
                  "\timaginary=" + Bits(m_library.qmGetLastImagResult()) +
                  "\tboolean=" + Answer(m_library.qmGetLastBoolResult()) +
                  "\ttext=" + Escaped(m_library.qmGetLastStrResult()) +
                  "\tindex=" + std::to_string(m_library.qmGetLastParseIndex()) +
                  "\tmessage=" + Escaped(m_library.qmGetLastErrorText()) + "\tcalls=" + m_host.calls);
  m_host.calls.clear();
  m_host.rerunsLeft = kReruns;
}

void Runner::Perform(Acts const& acts) {
  for (Act const& act : acts) {
    m_library.qmClearLastError();
    std::string const answer = act.Do(m_host);
    Line("act", act.shown + "\tanswer=" + answer + "\tcode=" + std::to_string(m_library.qmGetLastErrorID()) +
                    "\tcalls=" + m_host.calls);
    m_host.calls.clear();
  }
}

void Runner::DescribeWhatIsLeft(char const* label, std::set<std::string> const& names) {
  for (std::string const& name : names) {
    for (char const scope : {'G', 'C'}) {
      bool const isOperator = m_library.qmIsOp(scope, name.c_str());
      bool const isVariable = m_library.qmIsVar(scope, name.c_str());
      bool const isSymbol = m_library.qmIsSymbol(scope, name.c_str());
      if (!isOperator && !isVariable && !isSymbol) continue;
      std::string const kind =
          (isOperator ? "o" : "") + std::string(isVariable ? "v" : "") + (isSymbol ? "s" : "");
      Line(label, "name=" + name + "\tscope=" + scope + "\tis=" + kind +
                      "\tvariable=" + (isVariable ? VariableShown(m_library, scope, name) : ""));
    }
  }
  std::string settings;
  for (char const letter :
       {m_library.qmGetRadixMark(), m_library.qmGetQuoteMark(), m_library.qmGetBooleanTrue(),
        m_library.qmGetAngleUnit(), m_library.qmGetOutputBase(), m_library.qmGetCoordinateFormat(),
        m_library.qmGetDefaultVariableScope()})
    settings += letter;
  for (bool const flag : {m_library.qmGetAllowImpliedMult(), m_library.qmGetInvertArrayIndices(),
                          m_library.qmGetAllowComplexResults(), m_library.qmGetForceComplexResults()})
    settings += flag ? '1' : '0';
  Line(label, "settings=" + settings + " " + std::to_string(m_library.qmGetFormattedResultPrecisionLimit()));
  Line(label, "memory=" + m_host.memory.Shown());
}

// ---- runs ----

void Runner::RunAsText(Program const& program, std::string const& text) {
  char const* const letters = text.c_str();
  Observe("check", Escaped(m_library.qmCheckExp(letters)));
  Observe("annotate", WithOwnIds(m_library.qmAnnotateExp(letters)));
  Observe("text to text", Escaped(m_library.qmEvalExpStrToStr(letters)));
  Perform(program.changes[1]);
  Observe("text to number", Bits(m_library.qmEvalExpStrToNum(letters)));
  Perform(program.changes[2]);
  double imaginary = 0.25;
  double const real = m_library.qmEvalExpStrToComp(letters, &imaginary);
  Observe("text to complex", Bits(real) + "," + Bits(imaginary));
  Perform(program.changes[3]);
  Observe("text to boolean", Answer(m_library.qmEvalExpStrToBool(letters)));
  Perform(program.changes[4]);
  Observe("text to type", std::string(1, m_library.qmEvalExpStr(letters)));
}

void Runner::RunByHandle(Program const& program, std::string const& text) {
  Handle const handle = m_library.qmParseExp(text.c_str());
  Observe("parse", Answer(handle != 0));
  m_host.expression = handle;
  if (handle != 0) {
    Observe("annotate parsed", WithOwnIds(m_library.qmAnnotateParsedExp(handle)));
    char const* const shown = m_library.qmRevertParsedExp(handle);
    std::string const reverted = shown != nullptr ? shown : "";
    Observe("revert", Escaped(shown));
    Observe("annotate reverted", WithOwnIds(m_library.qmAnnotateExp(reverted.c_str())));
    Observe("handle to number", Bits(m_library.qmEvalExpHndlToNum(handle)));
    Perform(program.changes[1]);
    Observe("handle to text", Escaped(m_library.qmEvalExpHndlToStr(handle)));
    Perform(program.changes[2]);
    double imaginary = 0.25;
    double const real = m_library.qmEvalExpHndlToComp(handle, &imaginary);
    Observe("handle to complex", Bits(real) + "," + Bits(imaginary));
    Perform(program.changes[3]);
    Observe("handle to boolean", Answer(m_library.qmEvalExpHndlToBool(handle)));
    Perform(program.changes[4]);
    Observe("handle to type", std::string(1, m_library.qmEvalExpHndl(handle)));
  }
  m_library.qmDeleteExp(handle);
  m_host.expression = 0;
}

std::string Runner::Run(std::uint64_t number, std::set<std::size_t> const& dropped) {
  Program program = GenerateProgram(m_forms, m_seed, number);
  program.Drop(dropped);
  std::string const text = Join(program.pieces);
  bool const isShared = SharesContext(m_seed, number);
  m_record.clear();
  if (m_openBlock != kNone && m_openBlock != BlockStart(number)) CloseContext();
  m_record = "program " + std::to_string(number) + (program.isMutated ? " with a mistake" : "") +
             (isShared ? " in a shared context" : "") + "\n" + m_record;
  Line("settings", program.settings.Shown());
  if (m_openBlock == kNone) OpenContext(program.settings);
  auto const names = NamesOf(program, m_forms);
  m_names.insert(names.begin(), names.end());
  m_host.memory.Reset();
  m_host.calls.clear();
  m_host.rerunsLeft = kReruns;

  Perform(program.preparations);
  Line("text", Escaped(text.c_str()));
  if (program.startsByHandle) RunByHandle(program, text);
  else RunAsText(program, text);
  DescribeWhatIsLeft("left halfway", names);
  if (program.startsByHandle) RunAsText(program, text);
  else RunByHandle(program, text);
  DescribeWhatIsLeft("left", names);
  if (isShared) m_openBlock = BlockStart(number);
  else CloseContext();
  return m_record + "end\n";
}

}  // namespace qumel::compare
