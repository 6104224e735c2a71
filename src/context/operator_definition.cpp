// Checks the declarations of host operators and enters them into the operator lists.
#include "context/operator_definition.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

#include "engine/reachable_definitions.h"

namespace qumel {

namespace {

constexpr std::uint32_t kDefaultPrecedence = 621;  // that of the named functions

template <class Value>
struct SQMWord {
  std::string_view word;
  Value value;
};

constexpr std::array<SQMWord<EQMFix>, 4> kFixWords{{
    {"prefix", EQMFix::Prefix},
    {"postfix", EQMFix::Postfix},
    {"infix", EQMFix::Infix},
    {"nofix", EQMFix::Nofix},
}};

constexpr std::string_view kVoidWord = "void";  // of results only
constexpr std::array<SQMWord<EQMDataType>, 5> kTypeWords{{
    {"number", EQMDataType::Number},
    {"complex", EQMDataType::Complex},
    {"string", EQMDataType::String},
    {"boolean", EQMDataType::Boolean},
    {kVoidWord, EQMDataType::Untyped},
}};

template <class Words>
auto FindWord(Words const& words, std::string_view word) {
  return std::ranges::find(words, word, [](auto const& row) { return row.word; });
}

bool IsMissing(char const* text) { return text == nullptr || *text == '\0'; }

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsWordStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsWordPart(char c) { return IsWordStart(c) || (c >= '0' && c <= '9'); }

/** Removes a word and the blanks around it from the front of text; an empty word when there is none. */
std::string_view TakeWord(std::string_view& text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  std::size_t length = 0;
  if (!text.empty() && IsWordStart(text.front())) {
    while (length < text.size() && IsWordPart(text[length])) ++length;
  }
  std::string_view const word = text.substr(0, length);
  text.remove_prefix(length);
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return word;
}

/** Reads the whole file up to its first NUL. */
long ReadFile(char const* path, std::string& text) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return Error::NotFound;
  constexpr std::size_t kBlock = 1 << 16;
  for (std::size_t length = 0; file; text.resize(length)) {
    text.resize(length + kBlock);
    file.read(text.data() + length, kBlock);
    length += static_cast<std::size_t>(file.gcount());
    if (length > CQMOperatorDefiner::kLargestFile) return Error::OutOfMemory;
  }
  if (!file.eof()) return Error::NotFound;  // it could be opened but not read, as a folder
  text.resize(std::min(text.size(), text.find('\0')));
  return Error::None;
}

}  // namespace

struct CQMOperatorDefiner::SQMChecked {
  EQMFix fix = EQMFix::None;
  std::shared_ptr<SQMOperatorDefinition> definition = std::make_shared<SQMOperatorDefinition>();
};

long CQMOperatorDefiner::Conclude(long code) {
  m_context.SetLastError(code);
  return code;
}

CQMOperatorList& CQMOperatorDefiner::ListOf(char scope) const {
  return scope == Scope::kCosmic ? *CQMExecutor::GetCosmicOperatorList() : m_context.GetGlobalOperatorList();
}

long CQMOperatorDefiner::Define(SQMOperatorDeclaration const& declaration, char const* text) {
  SQMChecked checked;
  if (long const code = Check(declaration, checked); code != Error::None) return Conclude(code);
  checked.definition->isRecursive = text == nullptr;  // an empty text is an error, not a missing one
  if (!checked.definition->isRecursive) {
    if (long const code = GiveBody(*checked.definition, text); code != Error::None) return Conclude(code);
  }
  return Conclude(Load(declaration, std::move(checked)));
}

long CQMOperatorDefiner::Attach(SQMOperatorDeclaration const& declaration, OperatorCallback callback) {
  SQMChecked checked;
  if (long const code = Check(declaration, checked); code != Error::None) return Conclude(code);
  if (callback == nullptr) return Conclude(Error::NoFunctionPointer);
  checked.definition->callback = callback;
  return Conclude(Load(declaration, std::move(checked)));
}

long CQMOperatorDefiner::DefineBody(char scope, char const* name, char const* text) {
  CQMOpInfo info;
  if (name == nullptr || !ListOf(scope).CopyByToken(name, info)) return Conclude(Error::NotFound);
  if (info.definition != nullptr && info.definition->HasBody()) return Conclude(Error::OperatorExists);
  if (!info.bodyPending) return Conclude(Error::NotAwaitingBody);
  if (text == nullptr) return Conclude(Error::NoExpressionSupplied);
  return Conclude(GiveBody(*info.definition, text));  // it stays recursive: its body may name the operator
}

long CQMOperatorDefiner::Read(SQMOperatorDeclaration const& declaration, char const* path) {
  if (path == nullptr) return Define(declaration, nullptr);
  std::string text;
  if (long const code = ReadFile(path, text); code != Error::None) return Conclude(code);
  return Define(declaration, text.c_str());
}

long CQMOperatorDefiner::ReadBody(char scope, char const* name, char const* path) {
  if (path == nullptr) return m_context.GetLastErrorID();
  std::string text;
  if (long const code = ReadFile(path, text); code != Error::None) return Conclude(code);
  return DefineBody(scope, name, text.c_str());
}

long CQMOperatorDefiner::Delete(char scope, char const* name) {
  return Conclude(name == nullptr ? static_cast<long>(Error::NotFound) : ListOf(scope).DeleteDefined(name));
}

long CQMOperatorDefiner::Check(SQMOperatorDeclaration const& declaration, SQMChecked& checked) const {
  if (IsMissing(declaration.name)) return Error::NoOperatorName;
  if (std::string_view(declaration.name).size() > CQMOpInfo::kLongestToken) return Error::OperatorNameTooLong;
  if (ListOf(declaration.scope).HasToken(declaration.name)) return Error::OperatorExists;
  if (IsMissing(declaration.fixWord)) return Error::NoFixType;
  auto const fix = FindWord(kFixWords, declaration.fixWord);
  if (fix == kFixWords.end()) return Error::InvalidFixType;
  checked.fix = fix->value;
  if (IsMissing(declaration.returnWord)) return Error::NoReturnType;
  auto const type = FindWord(kTypeWords, declaration.returnWord);
  if (type == kTypeWords.end()) return Error::InvalidReturnType;
  checked.definition->returnType = type->value;
  return ParseParameters(declaration.parameters, checked.definition->parameters);
}

// Grammar: entry {separator entry}, with entry = type name | type | name; blanks may stand between words.
long CQMOperatorDefiner::ParseParameters(char const* text,
                                         std::vector<SQMOperatorParameter>& parameters) const {
  std::string_view rest = text != nullptr ? text : "";
  if (std::ranges::all_of(rest, IsBlank)) return Error::None;
  char const separator = m_context.GetPostFixer().GetReadingRules().listSeparator;
  for (bool more = true; more;) {
    std::string_view const first = TakeWord(rest);
    std::string_view const second = TakeWord(rest);
    auto const type = FindWord(kTypeWords, first);
    bool const isType = type != kTypeWords.end() && first != kVoidWord;
    if (first.empty() || (!isType && !second.empty())) return Error::InvalidParameterType;
    parameters.push_back(
        {std::string(isType ? second : first), isType ? type->value : EQMDataType::Undefined});
    more = !rest.empty();
    if (more && rest.front() != separator) return Error::InvalidParameterType;
    if (more) rest.remove_prefix(1);
  }
  return Error::None;
}

long CQMOperatorDefiner::GiveBody(SQMOperatorDefinition& definition, char const* text) {
  CQMItemList items;
  if (long const code = m_context.ConvertExpression(text, items); code != Error::None) return code;
  return CQMReachableDefinitions::GiveBody(definition,
                                           CQMReachableDefinitions::MakeBody(items.Kept(), m_context));
}

long CQMOperatorDefiner::Load(SQMOperatorDeclaration const& declaration, SQMChecked&& checked) {
  auto info = std::make_unique<CQMOpInfo>(declaration.name);
  info->id = CQMExecutor::GetNextExternalOperatorID();
  info->fix = checked.fix;
  info->minOperands = info->maxOperands = static_cast<std::int32_t>(checked.definition->parameters.size());
  CQMOpInfo neighbour;
  bool const hasNeighbour =
      !IsMissing(declaration.precedenceOperator) &&
      m_context.GetPostFixer().FindOperatorByToken(declaration.precedenceOperator, neighbour);
  info->precedence = hasNeighbour ? neighbour.precedence : kDefaultPrecedence;
  info->rightAssociative = checked.fix == EQMFix::Prefix;
  info->userDefined = true;
  info->bodyPending = checked.definition->isRecursive;
  info->returnType = checked.definition->returnType;
  info->definition = std::move(checked.definition);
  info->definition->id = info->id;
  info->definition->owner = declaration.scope == Scope::kCosmic ? nullptr : &m_context;
  bool const isFirst = ListOf(declaration.scope).Load(std::move(info));
  return isFirst ? Error::None : Error::OperatorExists;
}

}  // namespace qumel
