// The ways from a text or an expression to the last result and the last error.
#include <algorithm>
#include <utility>

#include "context/executor.h"
#include "engine/expression.h"

namespace qumel {

namespace {

/** Whatever is thrown on the way, by callbacks of the host too, counts as memory exhausted. */
template <class Work>
long CodeOf(Work work) {
  try {
    return work();
  } catch (...) {
    return Error::OutOfMemory;
  }
}

std::string_view TextOf(char const* text) { return text != nullptr ? text : ""; }

/** Makes room in a buffer that only grows. */
void Prepare(std::string& buffer, std::size_t size) {
  buffer.clear();
  buffer.reserve(std::max(size, CQMExecutor::kResultSize));
}

}  // namespace

/** Keeps the expression that a context runs alive: a callback may ask for its deletion. */
class CQMExecutor::CQMRun {
 public:
  CQMRun(CQMExecutor& context, CQMExpression& expression)
      : m_context(context), m_expression(expression), m_outer(context.m_innermostRun) {
    context.m_innermostRun = this;
  }
  ~CQMRun() { m_context.m_innermostRun = m_outer; }
  CQMRun(CQMRun const&) = delete;
  CQMRun& operator=(CQMRun const&) = delete;

  /** The outermost run of expression on the chain that ends here, or null. */
  static CQMRun* Find(CQMRun* innermost, CQMExpression const* expression) {
    CQMRun* found = nullptr;
    for (CQMRun* run = innermost; run != nullptr; run = run->m_outer) {
      if (&run->m_expression == expression) found = run;
    }
    return found;
  }
  void DestroyAtEnd() {
    if (m_owner == nullptr) m_owner.reset(&m_expression);
  }

 private:
  CQMExecutor& m_context;
  CQMExpression& m_expression;
  CQMRun* m_outer;
  std::unique_ptr<CQMExpression> m_owner;  // of an expression that was deleted during the run
};

/** What the conversion of a text works with, in memory that serves again. */
class CQMExecutor::CQMWorkingItems {
 public:
  explicit CQMWorkingItems(CQMExecutor& context)
      : m_context(context), m_compilation(context.TakeCompilation()) {}
  ~CQMWorkingItems() {
    if (m_compilation != nullptr) m_context.GiveBack(std::move(m_compilation));
  }
  CQMWorkingItems(CQMWorkingItems const&) = delete;
  CQMWorkingItems& operator=(CQMWorkingItems const&) = delete;

  CQMItemList& operator*() { return m_compilation->items; }
  CQMItemList* operator->() { return &m_compilation->items; }
  /** Hands the items over to be compiled. */
  std::unique_ptr<SQMCompilation> Release() { return std::move(m_compilation); }

 private:
  CQMExecutor& m_context;
  std::unique_ptr<SQMCompilation> m_compilation;
};

// ---- steps ----

long CQMExecutor::Convert(char const* text, CQMItemList& items) {
  if (!m_initialized) return Error::NotInitialized;
  long const code = m_postFixer->ConvertExpression(TextOf(text), items);
  m_lastParseIndex = m_postFixer->GetParseIndex();
  return m_lastError = code;
}

template <class Store>
long CQMExecutor::Run(CQMExpression& expression, Store store) {
  if (expression.IsQuiet()) {
    long const code = expression.Resolve();
    if (code == Error::None) store(expression.GetResult());
    return code;
  }
  CQMRun const run(*this, expression);
  CQMExpression& runs = expression.ForNewRun();
  long const code = runs.Resolve();
  if (code == Error::None) store(runs.GetResult());
  return code;
}

void CQMExecutor::Conclude(long code) {
  m_lastError = code;
  if (code != Error::None && m_errorCallback != nullptr) m_errorCallback(code);
}

template <class Store>
void CQMExecutor::EvaluateText(char const* text, Store store) {
  Conclude(CodeOf([&]() -> long {
    CQMWorkingItems items(*this);
    if (long const code = Convert(text, *items); code != Error::None) return code;
    CQMExpression expression(*this);
    expression.SetParentObject(this);
    m_lastError = expression.SetConvertedExpression(items.Release());
    return m_lastError == Error::None ? Run(expression, store) : m_lastError;
  }));
}

template <class Store>
void CQMExecutor::EvaluateExpression(CQMExpression* expression, Store store) {
  m_lastError = Error::None;  // an error of an earlier call is no obstacle
  Conclude(CodeOf([&]() -> long {
    if (expression == nullptr) return Error::NotFound;
    expression->SetErrorState(Error::None);
    return Run(*expression, store);
  }));
}

// ---- evaluation ----

char CQMExecutor::Evaluate(char const* text) {
  EvaluateText(text, [this](SQMResultView const& result) { StoreResult(result); });
  return m_lastType;
}

double CQMExecutor::EvaluateToNumber(char const* text) {
  EvaluateText(text, [this](SQMResultView const& result) { StoreAsNumber(result); });
  return m_lastReal;
}

double CQMExecutor::EvaluateToComplex(char const* text, double* imaginary) {
  EvaluateText(text, [this, imaginary](SQMResultView const& result) { StoreAsComplex(result, imaginary); });
  return m_lastReal;
}

bool CQMExecutor::EvaluateToBoolean(char const* text) {
  EvaluateText(text, [this](SQMResultView const& result) { StoreAsBoolean(result); });
  return m_lastBoolean;
}

char* CQMExecutor::EvaluateToString(char const* text) {
  EvaluateText(text, [this](SQMResultView const& result) { StoreAsString(result); });
  return m_lastString;
}

char CQMExecutor::Evaluate(CQMExpression* expression) {
  EvaluateExpression(expression, [this](SQMResultView const& result) { StoreResult(result); });
  return m_lastType;
}

double CQMExecutor::EvaluateToNumberAtLength(CQMExpression& expression) {
  if (CQMDetachedProgram* const program = expression.GetCurrentProgram(); program != nullptr) {
    long const status = program->Run();
    m_lastError = Error::None;
    if (status != Error::None) return FollowNumericProgram(*program, status);
    StoreAsNumber(program->GetResult());
    return m_lastReal;
  }
  EvaluateExpression(&expression, [this](SQMResultView const& result) { StoreAsNumber(result); });
  return m_lastReal;
}

double CQMExecutor::FollowNumericProgram(CQMDetachedProgram const& program, long status) {
  CQMExpression& expression = program.GetExpression();
  Conclude(CodeOf([&] {
    long const code = expression.FollowNumericProgram(status);
    if (code == Error::None) StoreAsNumber(expression.GetResult());
    return code;
  }));
  return m_lastReal;
}

double CQMExecutor::EvaluateToComplex(CQMExpression* expression, double* imaginary) {
  EvaluateExpression(expression,
                     [this, imaginary](SQMResultView const& result) { StoreAsComplex(result, imaginary); });
  return m_lastReal;
}

bool CQMExecutor::EvaluateToBoolean(CQMExpression* expression) {
  EvaluateExpression(expression, [this](SQMResultView const& result) { StoreAsBoolean(result); });
  return m_lastBoolean;
}

char* CQMExecutor::EvaluateToString(CQMExpression* expression) {
  EvaluateExpression(expression, [this](SQMResultView const& result) { StoreAsString(result); });
  return m_lastString;
}

// ---- parsed expressions ----

Handle CQMExecutor::ParseExpression(char const* text) {
  Handle handle = 0;
  Conclude(CodeOf([&]() -> long {
    CQMWorkingItems items(*this);
    if (long const code = Convert(text, *items); code != Error::None) return code;
    auto expression = std::make_unique<CQMExpression>(*this);
    if (long const code = expression->SetParsedExpression(items->Kept(), true); code != Error::None)
      return code;
    expression->Detach();
    expression->SetParentObject(this);
    handle = expression->GetObjectHandle(&m_gate);
    if (handle == 0) return Error::OutOfMemory;
    AddChildObject(expression.release());
    return Error::None;
  }));
  return handle;
}

void CQMExecutor::DeleteExpression(CQMExpression* expression) {
  if (expression == nullptr) return;
  ReleaseChildObject(expression);
  expression->DeleteHandle();  // also when it lives on until its run ends
  if (CQMRun* const run = CQMRun::Find(m_innermostRun, expression); run != nullptr)
    return run->DestroyAtEnd();
  std::unique_ptr<CQMExpression> const owner(expression);
}

// ---- texts ----

long CQMExecutor::ConvertExpression(char const* text, CQMItemList& items) {
  return m_lastError = CodeOf([&] { return Convert(text, items); });
}

char const* CQMExecutor::ConvertExpression(char const* text) {
  m_lastError = CodeOf([&]() -> long {
    m_conversion.clear();
    CQMWorkingItems items(*this);
    if (long const code = Convert(text, *items); code != Error::None) return code;
    m_conversion = items->GetPostfix();
    return Error::None;
  });
  return m_conversion.c_str();
}

char* CQMExecutor::AnnotateExpression(char const* text) {
  m_annotation.clear();
  m_lastError = CodeOf([&]() -> long {
    CQMWorkingItems items(*this);
    if (long const code = Convert(text, *items); code != Error::None) return code;
    return Annotate(*items);
  });
  return m_annotation.data();
}

char* CQMExecutor::AnnotateExpression(CQMExpression* expression) {
  m_annotation.clear();
  m_lastError = CodeOf([&] {
    return expression != nullptr ? Annotate(expression->GetItems()) : static_cast<long>(Error::NotFound);
  });
  return m_annotation.data();
}

long CQMExecutor::Annotate(CQMItemList const& items) {
  Prepare(m_annotation, items.Count());
  m_postFixer->AnnotateExpression(items, m_annotation);
  return Error::None;
}

char* CQMExecutor::RevertExpression(CQMExpression* expression) {
  m_reversion.clear();
  m_lastError = CodeOf([&] {
    return expression != nullptr ? Revert(expression->GetItems()) : static_cast<long>(Error::NotFound);
  });
  return m_reversion.data();
}

long CQMExecutor::Revert(CQMItemList const& items) {
  if (!m_initialized) return Error::NotInitialized;
  Prepare(m_reversion, items.Count());
  long const code =
      m_postFixer->RevertExpression(items, m_reversion, m_postFixer->GetReadingRules().quoteMark);
  if (code != Error::None) m_reversion.clear();  // half a text is no text
  return code;
}

char* CQMExecutor::GetParsedExpression(CQMExpression* expression) {
  m_conversion.clear();
  if (expression == nullptr) {
    m_lastError = Error::NotFound;
  } else if (long const code = CodeOf([&]() -> long {
               m_conversion = expression->GetItems().GetPostfix();
               return Error::None;
             });
             code != Error::None) {
    m_lastError = code;
  }
  return m_conversion.data();
}

char const* CQMExecutor::CheckExpression(char const* text) {
  bool isConverted = false;
  m_lastError = CodeOf([&]() -> long {
    CQMWorkingItems items(*this);
    if (long const code = Convert(text, *items); code != Error::None) return code;
    isConverted = true;
    return Revert(*items);
  });
  return isConverted ? m_reversion.c_str() : GetLastErrorText();
}

}  // namespace qumel
