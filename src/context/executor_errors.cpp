// Error messages: the process-wide table of the standard messages, and the messages of each context.
#include <mutex>

#include "base/number_text.h"
#include "context/executor.h"
#include "context/process_state.h"
#include "language/stack_string.h"

namespace qumel {

namespace {

/** Refuses codes that are known in table or in its parent. */
long LoadMessage(CQMSymbolTable& table, long code, char const* text) {
  if (text == nullptr || *text == '\0') return Error::ErrorMessageNotLoaded;
  std::string const name = DecimalText(code);
  if (table.IsSymbol(name, false)) return Error::ErrorMessageNotLoaded;
  auto message = std::make_unique<CQMStackString>(text);
  message->SetObjectName(name.c_str());
  long const result = table.AddSymbol(message.get());
  if (result == Error::None) static_cast<void>(message.release());  // the table owns it now
  return result;
}

char const* FindMessage(CQMSymbolTable* table, long code) {
  CQMObject* const found = table != nullptr ? table->GetSymbol(DecimalText(code), false) : nullptr;
  return found != nullptr ? static_cast<CQMStackString*>(found)->GetText().c_str() : nullptr;
}

}  // namespace

void CQMExecutor::LoadStandardMessages(CQMSymbolTable& table) {
  for (SQMErrorMessage const& row : kErrorMessages) LoadMessage(table, row.code, row.text);
}

long CQMExecutor::LoadCosmicErrorMessage(long code, char const* text) {
  if (sm_pCosmicErrTab == nullptr) return Error::ErrorMessageNotLoaded;
  std::scoped_lock const lock(g_process.errorMutex);
  return LoadMessage(*sm_pCosmicErrTab, code, text);
}

long CQMExecutor::LoadGlobalErrorMessage(long code, char const* text) {
  return m_errors != nullptr ? LoadMessage(*m_errors, code, text)
                             : static_cast<long>(Error::ErrorMessageNotLoaded);
}

bool CQMExecutor::DefineError(char scope, long code, char const* text) {
  if (code <= kLastLibraryError) return false;
  m_lastError =
      scope == Scope::kCosmic ? LoadCosmicErrorMessage(code, text) : LoadGlobalErrorMessage(code, text);
  return m_lastError == Error::None;
}

char const* CQMExecutor::GetErrorText(long code) {
  char const* const text = FindMessage(m_errors.get(), code);
  return text != nullptr ? text : FindMessage(m_errors.get(), Error::UnknownError);
}

}  // namespace qumel
