/* The public interface of Qumel, a library that evaluates mathematical, logical and string expressions.
 *
 * It reads as C11 and as C++17. What holds for every function is told here once.
 *
 * Contexts. Every evaluation, variable, setting and error belongs to a context. A thread works in its
 *   current context; its first call that needs one gets the default context, which is the primary context,
 *   "Qumel", unless a host chose another. "Without a context" below means that none could be had: memory is
 *   exhausted, or qmUnloadQumel has been called. Functions that need a context then answer with their failure
 *   value and do nothing.
 * Null. A null text, name or pointer never crashes: a null name names nothing, a null expression text is an
 *   empty one, and nothing is written through a null pointer.
 * Truth. bool is that of <stdbool.h>; true is success or yes.
 * Texts. Arguments are NUL-terminated, are read during the call and not kept. A returned text belongs to
 *   the library; copy it before the next call of the same kind, which overwrites it, and do not free it. A
 *   result text has at most 1023 characters.
 * Last error. A context keeps the code of its last failure. Evaluating, parsing, checking, annotating and
 *   reverting set it, to 0 on success. Functions on variables and operators set it on failure; most leave
 *   it as it was on success, so clear it first (qmClearLastError) where its value matters.
 * Handles. A 64-bit number that names a context, a parsed expression, a variable or, during its callback,
 *   an operator. 0 names nothing. A handle whose object is gone names nothing and is safe to use.
 * Letters. Choices are single characters, listed with each function, in capital letters.
 *   Scopes: 'C' process-wide, 'G' the current context only, any other: the current context, then
 *   process-wide.
 *   Types:  'N' number, 'C' complex, 'S' string, 'B' boolean, 'X' none.
 * Threads. Returned texts, the last result and the last error belong to the context: where several threads
 *   share one, each finds what the last call of any of them left there. Threads that need them use contexts
 *   of their own, or keep each other out with qmLockContext. The numbers and truth values that a call
 *   returns are right in any case.
 *   Any thread may call any function. Threads that use different contexts do not wait for each other. A call
 *   that enters a context in which another thread works waits until that has left; the calls of a callback
 *   do not wait for the call that they stand in. Whatever works on variables, expressions, operators,
 *   settings, errors and results enters the current context, or the one of its handle; making, choosing,
 *   locking, naming and destroying contexts enters none.
 *   A wait that would close a circle of waiting threads is refused: the call answers with its failure value.
 *   The error is 3010. It becomes the last error of the current context where the thread is at work in that;
 *   and to ask for the last error of the context that could not be entered gives 3010, too. A callback that
 *   waits by means of its own for another thread, which calls in the same context, waits for ever: that
 *   circle is the host's own.
 *   Process-wide names may be defined, used and deleted by all threads at any time; what another thread is
 *   using is not deleted (3440). Threads that write and read the value of one see to their turns themselves,
 *   and while a text that was handed out as its own buffer is read, no other thread deletes it.
 *   Each thread has a record of its own that lives until qmReset, qmRelease or qmUnloadQumel, not until the
 *   thread ends: a later thread to which the system gives the same id takes it over, with its contexts and
 *   settings.
 * Exceptions. None leaves the library. A failure to allocate is error 3230.
 */
#ifndef QUMEL_QUMEL_H
#define QUMEL_QUMEL_H

#include <stdbool.h>
#include <stdint.h>

#define QUMEL_VERSION_MAJOR 2
#define QUMEL_VERSION_MINOR 5
#define QUMEL_VERSION_PATCH 0

#define QM_API __attribute__((visibility("default")))

/* An argument by which a function hands a value back: a reference in C++, a pointer in C. The binary form
 * is the same. Define QM_PLAIN_POINTERS to see pointers in C++ as well. */
#if defined(__cplusplus) && !defined(QM_PLAIN_POINTERS)
#define QM_REF(type) type&
#else
#define QM_REF(type) type*
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================================================
 * Error codes
 *
 * Codes up to 9999 are the library's; hosts may define others (qmDefineError). qmGetErrorText has the text
 * of each.
 * ====================================================================================================== */

enum EQMErrorCode {
  QMErrorNone = 0,
  QMErrorStop = 1000,
  QMErrorStackInitFailed = 1010,
  QMErrorStackFull = 1020,
  QMErrorStackNoMemory = 1030,
  QMErrorStackEmpty = 1040,
  QMErrorStackNoSuchIndex = 1050,
  QMErrorStackOffsetsFailed = 1060,
  QMErrorStackLengthsFailed = 1070,
  QMErrorStackShrinkSizeFailed = 1080,
  QMErrorStackSetSpaceFailed = 1090,
  QMErrorStackCannotShrinkNow = 1100,
  QMErrorStackBadGrowChunk = 1110,
  QMErrorStackGrowSpaceFailed = 1120,
  QMErrorStackShrinkSpaceFailed = 1130,
  QMErrorStackCreateFailed = 1140,
  QMErrorStackOffsetsAreaFailed = 1150,
  QMErrorStackLengthsAreaFailed = 1160,
  QMErrorStackBadItemLength = 1170,
  QMErrorStackItemNull = 1180,
  QMErrorStackSetDepthFailed = 1190,
  QMErrorStackGrowDepthFailed = 1200,
  QMErrorStackShrinkDepthFailed = 1210,
  QMErrorUnknownToken = 2010,
  QMErrorUnknownOperator = 2020,
  QMErrorAddOperatorFailed = 2030,
  QMErrorCreateStacksFailed = 2040,
  QMErrorMissingRightParen = 2050,
  QMErrorMissingLeftParen = 2060,
  QMErrorMissingLeftBracket = 2070,
  QMErrorCloseParenFailed = 2080,
  QMErrorNotInitialized = 3010,
  QMErrorErrorMessageNotLoaded = 3020,
  QMErrorBadExpression = 3030,
  QMErrorNotAnLValue = 3040,
  QMErrorTargetIsConstant = 3050,
  QMErrorNotDefined = 3060,
  QMErrorAlreadyExists = 3070,
  QMErrorConversionFailed = 3080,
  QMErrorTypeMismatch = 3090,
  QMErrorOverflow = 3100,
  QMErrorDivisionByZero = 3110,
  QMErrorNoSpaceForOperand = 3120,
  QMErrorInvocationFailed = 3130,
  QMErrorResultIsComplex = 3140,
  QMErrorResultNotDefined = 3150,
  QMErrorNotANumber = 3160,
  QMErrorNotABoolean = 3170,
  QMErrorNotAString = 3180,
  QMErrorNotEnoughOperands = 3190,
  QMErrorTooManyOperands = 3200,
  QMErrorIndexOutOfBounds = 3210,
  QMErrorNotFound = 3220,
  QMErrorOutOfMemory = 3230,
  QMErrorExternalOperatorNotSet = 3240,
  QMErrorExternalOperatorNotCleared = 3250,
  QMErrorUseSubstitute = 3260,
  QMErrorNoGotoTarget = 3270,
  QMErrorResultIsInfinite = 3280,
  QMErrorTooManySubstitutions = 3290,
  QMErrorNoOperatorName = 3300,
  QMErrorOperatorNameTooLong = 3310,
  QMErrorOperatorExists = 3320,
  QMErrorNoFixType = 3330,
  QMErrorInvalidFixType = 3340,
  QMErrorNoReturnType = 3350,
  QMErrorInvalidReturnType = 3360,
  QMErrorInvalidParameterType = 3370,
  QMErrorOperatorAddFailed = 3380,
  QMErrorNotAwaitingBody = 3390,
  QMErrorNoFunctionPointer = 3400,
  QMErrorNoExpressionSupplied = 3410,
  QMErrorDeleteNotAllowed = 3420,
  QMErrorVerifyAgain = 3430,
  QMErrorVariableInUse = 3440,
  QMErrorUnimplementedOperator = 3450,
  QMErrorOptimizeAgain = 3460,
  QMErrorPrecisionIsNegative = 3470,
  QMErrorComplexOperandFound = 3480,
  QMErrorDiagnosticMarker1 = 9010,
  QMErrorDiagnosticMarker2 = 9020,
  QMErrorDiagnosticMarker3 = 9030,
  QMErrorDiagnosticMarker4 = 9040,
  QMErrorUnknownError = 9999
};

/* ======================================================================================================
 * Life of the library
 * ====================================================================================================== */

/** Starts the library: the calling thread gets a record, and the primary context is made. Call it first.
 *  text     not interpreted; may be null
 *  returns  true once; false when the library has been started or unloaded before */
QM_API bool qmInitialize(char const* text);

/** Does nothing; there for hosts that load the library by hand. Returns true. */
QM_API bool qmLoadQumel(void);

/** Destroys all thread records with their private contexts, and all public contexts. The primary context,
 *  its variables and process-wide names stay; the primary context becomes the default again.
 *  returns  true; false after qmUnloadQumel
 *  threads  no other thread may be in a call */
QM_API bool qmReset(void);

/** The same as qmReset. */
QM_API bool qmRelease(void);

/** Destroys everything. From then on every function that needs a context or a thread record answers with its
 *  failure value; the library does not start again in this process. Returns true.
 *  threads  no other thread may be in a call */
QM_API bool qmUnloadQumel(void);

/** The version, 2.5. */
QM_API float qmVersion(void);

/** Number of objects that the library holds at present; for tests that look for leaks. */
QM_API long qmGetQumelObjectCount(void);

/** Serial number that the next object will get. */
QM_API long qmGetNextQumelObjectSerialNumber(void);

/* ======================================================================================================
 * Contexts
 *
 * A context has variables, operators, settings and errors of its own. Public contexts are seen by all
 * threads, private ones by the thread that made them. The name "Qumel" stands for the primary context and
 * is refused for others. Names are told apart by case.
 *
 * A new context takes settings over from the thread that makes it: those that the thread chose, or that its
 * current context had when it became current. Mode words in expressions do not count among them.
 * ====================================================================================================== */

/** Makes a public context, with the settings of the calling thread at this moment (all but inverted
 *  indices, forced complex results, default scope and precision, which get the defaults false, false, 'L'
 *  and 12). It does not become current.
 *  name     any text but "Qumel"; a name in use gives the context that has it
 *  returns  the context's handle; 0 for a null or reserved name, and without memory, which leaves the error
 *           3230 */
QM_API unsigned long long qmCreatePublicContext(char const* name);

/** Makes a private context of the calling thread, with all of the thread's settings at this moment. It does
 *  not become current.
 *  name     any text but "Qumel"; a name in use gives the context that has it
 *  returns  the context's handle; 0 for a null or reserved name, and without memory, which leaves the error
 *           3230 */
QM_API unsigned long long qmCreatePrivateContext(char const* name);

/** Destroys a public context with all that belongs to it, as soon as the calls that are at work in it have
 *  returned. Threads for which it was current have no current context then, and go on in the default one at
 *  their next call that needs one. If it was the default, the primary context is again.
 *  returns  false when there is none of that name */
QM_API bool qmDestroyPublicContext(char const* name);

/** Destroys a private context of the calling thread. Returns false when it has none of that name. */
QM_API bool qmDestroyPrivateContext(char const* name);

/** Makes a context current for the calling thread: "Qumel", else its private context of that name, else the
 *  public one. The thread's settings become those of the context.
 *  lock     waits until no other thread has the context locked, and locks it; the primary context is never
 *           locked. A lock on the context that was current before is kept.
 *  returns  the context's handle; 0, and nothing changes, when there is none of that name, when it is
 *           destroyed during the wait, and when the wait would never end */
QM_API unsigned long long qmSetContext(char const* name, bool lock);

/** Makes a public context, or "Qumel", the default: threads that have no current context get it.
 *  returns  false, and nothing changes, when there is none of that name */
QM_API bool qmSetDefaultContext(char const* name);

/** Makes the primary context the default again. Returns true. */
QM_API bool qmResetDefaultContext(void);

/** Handle of "Qumel", else of the thread's private context of that name, else of the public one; 0 if
 *  none. */
QM_API unsigned long long qmGetContextHandle(char const* name);

/** Name of the context that handle names: the primary one, a public one or a private one of this thread.
 *  Empty for any other handle. The text lives until the next call of this function by the same thread; it
 *  is cut at 127 characters. */
QM_API char const* qmGetContextName(unsigned long long handle);

/** Name of the thread's current context; empty without one. The text lives until the next call of this
 *  function by the same thread; it is cut at 127 characters. */
QM_API char const* qmGetCurrentContextName(void);

/** Handle of the thread's current context; 0 without one. */
QM_API unsigned long long qmGetCurrentContextHandle(void);

/** Waits until no other thread has the current context locked, and locks it. The lock is an agreement among
 *  threads that take it, for what is to be done undivided: other calls neither take it nor wait for it.
 *  returns  true when this thread has the lock; false in the primary context, without a current one (none is
 *           chosen here), when it is destroyed during the wait, and when the wait would never end */
QM_API bool qmLockContext(void);

/** Gives the lock back that the thread took since the context became current, by qmSetContext with lock or
 *  by qmLockContext. A lock from before, of a context that the thread left and came back to without taking
 *  it again, stays; take it again and give it back then.
 *  returns  true, also when there was nothing to give back; false in the primary context and without a
 *           current one */
QM_API bool qmReleaseContext(void);

/** The thread has no current context afterwards; a lock on it is given back, and the thread's settings get
 *  their defaults. Settings made now go into contexts created next. Returns true; false without a thread
 *  record. */
QM_API bool qmClearContext(void);

/* ======================================================================================================
 * Evaluating text
 *
 * Each call reads the text, evaluates it in the current context and keeps the result there: its type letter
 * and its value can be asked for afterwards. Errors of reading (2010 to 2080, 3030, 3190, 3200), of compiling
 * and of evaluating become the last error, and the error callback is called with the code. After an error the
 * last result is the one before.
 * ====================================================================================================== */

/** Evaluates text. Returns the type letter of the result, that of the result before after an error, or 'X'
 *  without a context. The value is had with the qmGetLast...Result functions. */
QM_API char qmEvalExpStr(char const* text);

/** Evaluates text to a number: the real part of a complex result, the number that a text begins with, 0.0
 *  for false; true gives 1.0 or -1.0 by qmSetBooleanTrue. After an error the value of the result before,
 *  and 0.0 without a context. */
QM_API double qmEvalExpStrToNum(char const* text);

/** Evaluates text to a complex number, with texts and truth values as in qmEvalExpStrToNum. Returns the real
 *  part and writes the imaginary part to *imaginary, unless that is null or the result is a text or none.
 *  After an error the real part of the result before, with nothing written, and 0.0 without a context. */
QM_API double qmEvalExpStrToComp(char const* text, double* imaginary);

/** Evaluates text to a truth value: numbers are true unless 0, texts unless empty; the imaginary part counts
 *  while complex results are allowed. After an error the truth value before, and false without a context. */
QM_API bool qmEvalExpStrToBool(char const* text);

/** Evaluates text and writes the result under the settings of the context: base, precision, decimal point
 *  and coordinate format. After an error the text before (ask qmGetLastErrorID), and null without a context.
 *  The text lives until the next evaluation in the context. */
QM_API char const* qmEvalExpStrToStr(char const* text);

/* ======================================================================================================
 * Parsed expressions
 *
 * An expression that is evaluated often is parsed once. It belongs to the context that parsed it, and runs
 * there whichever context is current: its results and errors are kept there, and qmGetLastErrorID tells them
 * while that context is current. It lives until qmDeleteExp or until its context goes. A handle that names no
 * expression gives the values of "without a context" and changes nothing.
 * ====================================================================================================== */

/** Reads and compiles text. Returns the handle of the expression; 0 after an error, which becomes the last
 *  error and goes to the error callback. */
QM_API unsigned long long qmParseExp(char const* text);

/** qmEvalExpStr for a parsed expression. */
QM_API char qmEvalExpHndl(unsigned long long handle);

/** qmEvalExpStrToNum for a parsed expression. */
QM_API double qmEvalExpHndlToNum(unsigned long long handle);

/** qmEvalExpStrToComp for a parsed expression. */
QM_API double qmEvalExpHndlToComp(unsigned long long handle, double* imaginary);

/** qmEvalExpStrToBool for a parsed expression. */
QM_API bool qmEvalExpHndlToBool(unsigned long long handle);

/** qmEvalExpStrToStr for a parsed expression. */
QM_API char const* qmEvalExpHndlToStr(unsigned long long handle);

/** Destroys a parsed expression. Its handle names nothing afterwards. */
QM_API void qmDeleteExp(unsigned long long handle);

/* ======================================================================================================
 * Showing expressions
 * ====================================================================================================== */

/** Checks text without evaluating it. Returns the expression as the library reads it, or the text of the
 *  error, whose code is then the last error; null without a context. It reads the text and does not compile
 *  it: unknown names, operands of another type, missing operands of functions and faults of structure are
 *  found by qmParseExp, and what depends on values, such as a division by zero, only by evaluating. */
QM_API char const* qmCheckExp(char const* text);

/** The annotated postfix form of text: its operators and operands in the order of evaluation, with marks
 *  that tell what each is. Empty after an error, null without a context. The text lives until the next
 *  annotation in the context. */
QM_API char const* qmAnnotateExp(char const* text);

/** qmAnnotateExp for a parsed expression. */
QM_API char const* qmAnnotateParsedExp(unsigned long long handle);

/** The text of a parsed expression, made anew from its compiled form. Empty after an error, null without a
 *  context. The text lives until the next reversion in the context. */
QM_API char const* qmRevertParsedExp(unsigned long long handle);

/* ======================================================================================================
 * The last result
 * ====================================================================================================== */

/** Type letter of the last result; 0 without a context. */
QM_API char qmGetLastResultType(void);

/** The last number, or the real part of the last complex number; 0.0 without a context. */
QM_API double qmGetLastNumResult(void);

/** The same as qmGetLastNumResult. */
QM_API double qmGetLastRealResult(void);

/** Imaginary part of the last complex number; 0.0 without a context. */
QM_API double qmGetLastImagResult(void);

/** The last truth value; false without a context. */
QM_API bool qmGetLastBoolResult(void);

/** The last text result or formatted result; null without a context. The text lives until the next
 *  evaluation in the context. */
QM_API char const* qmGetLastStrResult(void);

/** Where reading the last text ended, counted in characters from its first one that is not white space:
 *  after an error of reading, the place of the error. 0 without a context. */
QM_API long qmGetLastParseIndex(void);

/* ======================================================================================================
 * Settings
 *
 * Without a current context they are kept for the thread and go into the contexts that it creates. With
 * one, the first group changes nothing, since it steers how the context was made; the second group acts at
 * once, in the context too. When a context becomes current the thread takes its settings over; when it is
 * cleared or destroyed they get their defaults. A value that is not listed changes nothing. Getters answer
 * for the current context if there is one, else for the thread, and with the value named here when the
 * thread can have no record.
 * ====================================================================================================== */

/* ---- chosen before a context is created ---- */

/** Decimal point of what is read and written: 'P' period, 'C' comma. With the comma, a comma within a number
 *  is its decimal point unless white space follows: "max(1,5, 2)" has the operands 1.5 and 2. So has
 *  "max(1,5;2)": within the parentheses of operators, within "[ ]" and between the parameters of host
 *  operators ';' parts operands then. 'P' at first. */
QM_API void qmSetRadixMark(char mark);
/** The decimal point; ' ' without a record. */
QM_API char qmGetRadixMark(void);

/** Quote character of texts: '1' single, '2' double. '2' at first. */
QM_API void qmSetQuoteMark(char mark);
/** The quote character; ' ' without a record. */
QM_API char qmGetQuoteMark(void);

/** Number that true stands for: 'C' 1, 'N' -1. 'C' at first. */
QM_API void qmSetBooleanTrue(char mark);
/** The number that true stands for; ' ' without a record. */
QM_API char qmGetBooleanTrue(void);

/** Whether two operands side by side are multiplied, as in 2pi. True at first. */
QM_API void qmSetAllowImpliedMult(bool allow);
/** Whether operands side by side are multiplied; false without a record. */
QM_API bool qmGetAllowImpliedMult(void);

/** Whether the indices of arrays are taken in reverse order. False at first. */
QM_API void qmSetInvertArrayIndices(bool invert);
/** Whether indices are taken in reverse order; false without a record. */
QM_API bool qmGetInvertArrayIndices(void);

/* ---- changed at any time ---- */

/** Unit of angles: 'D' degrees, 'G' gradians, 'M' mils (1000 to the turn), 'R' radians. 'D' at first. */
QM_API void qmSetAngleUnit(char unit);
/** The unit of angles; ' ' without a record. */
QM_API char qmGetAngleUnit(void);

/** Base of formatted numbers: 'B' 2, 'O' 8, 'D' 10, 'T' 12, 'H' 16. 'D' at first. */
QM_API void qmSetOutputBase(char base);
/** The base of formatted numbers; ' ' without a record. */
QM_API char qmGetOutputBase(void);

/** How complex results are written: 'R' real and imaginary part, 'P' radius and angle. 'R' at first. */
QM_API void qmSetCoordinateFormat(char format);
/** How complex results are written; ' ' without a record. */
QM_API char qmGetCoordinateFormat(void);

/** Scope of variables that expressions create without a scope word: 'C', 'G' or 'L' (the expression's own).
 *  Any other letter sets 'L'. 'L' at first. */
QM_API void qmSetDefaultVariableScope(char scope);
/** The default scope; ' ' without a record. */
QM_API char qmGetDefaultVariableScope(void);

/** Digits after the decimal point in formatted results: 0 or more. 12 at first. */
QM_API void qmSetFormattedResultPrecisionLimit(int digits);
/** Digits after the decimal point; 0 without a record. */
QM_API int qmGetFormattedResultPrecisionLimit(void);

/** Whether operations on real numbers may have complex results; error 3140 otherwise. False at first. Ends
 *  forced complex results in the current context. */
QM_API void qmSetAllowComplexResults(bool allow);
/** Whether complex results are allowed; false without a record. */
QM_API bool qmGetAllowComplexResults(void);

/** Has everything evaluated as complex in the private contexts that the thread creates next. With a current
 *  context it allows complex results there instead. */
QM_API void qmSetForceComplexResults(void);
/** Whether everything is evaluated as complex: true for a thread that has had no context yet, false after
 *  qmClearContext, and false without a record. */
QM_API bool qmGetForceComplexResults(void);

/* ======================================================================================================
 * Errors
 * ====================================================================================================== */

/** Code of the context's last error, 0 for none; 3010 without a context. */
QM_API long qmGetLastErrorID(void);

/** Text of the context's last error; null without a context. Lives as long as the context. */
QM_API char const* qmGetLastErrorText(void);

/** Text of an error code; "Unknown error" for one without a text; null without a context. Lives as long as
 *  the context. */
QM_API char const* qmGetErrorText(long code);

/** Makes code the last error; a negative one changes nothing. Returns code; 0 without a context. */
QM_API long qmSetLastError(long code);

/** Makes the last error 0. */
QM_API void qmClearLastError(void);

/** Gives an error code of the host a text.
 *  scope    'C' for all contexts, any other for the current one
 *  code     above 9999; others are refused and the last error stays
 *  text     neither null nor empty
 *  returns  whether the text was taken
 *  errors   3020 the code has a text already, or the text is missing */
QM_API bool qmDefineError(char scope, long code, char const* text);

/** Has callback called with the code of each error in which evaluating or parsing in the current context
 *  ends, on the evaluating thread, before the call returns. What the callback evaluates in the same context
 *  replaces the last error, so that the caller does not find it any more: look at the code, or put it back
 *  with qmSetLastError. Null clears the callback. Returns false without a context. */
QM_API bool qmSetErrorCallback(void (*callback)(long code));

/** Clears the callback. Returns false without a context. */
QM_API bool qmClearErrorCallback(void);

/* ======================================================================================================
 * What a name stands for
 *
 * scope is 'C' process-wide, 'G' the current context, any other both. False without a context.
 * ====================================================================================================== */

/** Whether name is an operator: a sign, a function, a keyword or a constant. */
QM_API bool qmIsOp(char scope, char const* name);

/** Whether name is a variable or an operator. */
QM_API bool qmIsSymbol(char scope, char const* name);

/** Whether name is a variable, an array included. */
QM_API bool qmIsVar(char scope, char const* name);

/** Whether name is an array. */
QM_API bool qmIsArray(char scope, char const* name);

/* ======================================================================================================
 * Variables
 *
 * Scopes. 'C' is process-wide. 'G' is the current context; any other letter creates there as well, but
 *   looks in the process-wide names too, when it looks a name up and when it asks whether a name is taken.
 *   Texts differ on purpose: a text cannot be created with 'G' either where its name is process-wide, and
 *   qmGetStrVarValue looks process-wide first and then in the context, also for 'C'.
 * Created variables belong to the library and hold one reference for the handle that was returned; while
 *   there is a reference, qmDeleteVar refuses (3440). Give it back with qmReleaseVarHandle.
 * Linked variables are the host's memory, which must stay in place until the variable is deleted or its
 *   context goes. The library reads and writes it during evaluation, neither clears nor frees it, and holds
 *   no reference. A linked number that gets a complex value comes loose: it goes on as a complex variable of
 *   the library's own, and the host's memory keeps what it held.
 * Arrays have 1 to 6 dimensions: dims is their number, e1 to e6 the extents, i1 to i6 the indices, of which
 *   those behind dims are not looked at (pass -1). Extents are 1 and more; others are refused (3210).
 *   Indices count from 0. Elements lie in rows: the last index runs fastest (the first one with inverted
 *   indices). A complex value that an expression stores into one element of an array of numbers makes the
 *   whole array complex and moves all others: what stood there is taken as pairs of real and imaginary
 *   part, with zeros behind them. Create such an array as a complex one.
 * Errors become the last error: 3060 no such variable; 3070 the name is taken; 3090 another type; 3210
 *   dimensions or indices out of bounds, an array where a scalar is meant or the reverse; 3230 out of
 *   memory. Creating and linking also refuse a missing name (3060), one too long for a table (3100), a text
 *   length below 1 (3210) and null memory (3220). Functions that create an array fail at once while an older
 *   last error stands. Setters leave an older error in place, and return true only when the last error is 0
 *   afterwards.
 * Without a context the functions return 0, 0.0, false, null or 'X'.
 * ====================================================================================================== */

/* ---- numbers ---- */

/** Creates a number. Returns its handle, 0 after an error (3070). */
QM_API unsigned long long qmCreateNumVar(char scope, char const* name, double initial);
/** Makes *value a number variable. Returns whether the last error is 0 (3070). */
QM_API bool qmLinkNumVar(char scope, char const* name, double* value);
/** Sets a number, or the real part of a complex number. Returns whether the last error is 0 (3060, 3090,
 *  3210). With 3090 the bytes of the double are copied as they are into the variable of the other type, and
 *  with 3210 into the first element of the array: what the variable held is lost, and what it holds then is
 *  neither the number nor a meaningful text or truth value. */
QM_API bool qmSetNumVar(char scope, char const* name, double value);
/** Sets a number by handle. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetNumVarByHandle(unsigned long long handle, double value);
/** A number, or the real part of a complex number; 0.0 after an error (3060, 3090, 3210). */
QM_API double qmGetNumVarValue(char scope, char const* name);
/** A number by handle; 0.0 after an error (3060, 3090, 3210). */
QM_API double qmGetNumVarValueByHandle(unsigned long long handle);

/* ---- complex numbers: two doubles, real part first ---- */

/** Creates a complex number. Returns its handle, 0 after an error (3070). */
QM_API unsigned long long qmCreateComplexVar(char scope, char const* name, double real, double imaginary);
/** Makes the two doubles at value a complex variable. Returns whether the last error is 0 (3070). */
QM_API bool qmLinkComplexVar(char scope, char const* name, double* value);
/** Sets both parts. Returns whether the last error is 0 (3060, 3090, 3210). With 3090 the value is stored
 *  all the same, but never into an array. */
QM_API bool qmSetComplexVar(char scope, char const* name, double real, double imaginary);
/** Sets both parts by handle. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetComplexVarByHandle(unsigned long long handle, double real, double imaginary);
/** Sets the real part, of a number as well; else as qmSetNumVar. */
QM_API bool qmSetRealVar(char scope, char const* name, double real);
/** Sets the real part by handle; else as qmSetNumVarByHandle. */
QM_API bool qmSetRealVarByHandle(unsigned long long handle, double real);
/** Sets the imaginary part; else as qmSetNumVar, but that a number becomes complex with 3090, and texts and
 *  truth values stay. */
QM_API bool qmSetImagVar(char scope, char const* name, double imaginary);
/** Sets the imaginary part by handle; else as qmSetNumVarByHandle. */
QM_API bool qmSetImagVarByHandle(unsigned long long handle, double imaginary);
/** Writes both parts to where real and imaginary point; zeros after an error (3060, 3090, 3210). Clears the
 *  last error first. */
QM_API void qmGetComplexVarValue(char scope, char const* name, double* real, double* imaginary);
/** Writes both parts by handle; zeros after an error (3060, 3090, 3210). */
QM_API void qmGetComplexVarValueByHandle(unsigned long long handle, double* real, double* imaginary);

/* ---- truth values ---- */

/** Creates a truth value. Returns its handle, 0 after an error (3070). */
QM_API unsigned long long qmCreateBoolVar(char scope, char const* name, bool initial);
/** Makes *value a boolean variable. Returns whether the last error is 0 (3070). */
QM_API bool qmLinkBoolVar(char scope, char const* name, bool* value);
/** Sets a truth value; else as qmSetNumVar: with 3090 the byte of the truth value, followed by zeros, is
 *  copied into a variable of another type. */
QM_API bool qmSetBoolVar(char scope, char const* name, bool value);
/** Sets a truth value by handle. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetBoolVarByHandle(unsigned long long handle, bool value);
/** A truth value; false after an error (3060, 3090, 3210). */
QM_API bool qmGetBoolVarValue(char scope, char const* name);
/** A truth value by handle; false after an error (3060, 3090, 3210). */
QM_API bool qmGetBoolVarValueByHandle(unsigned long long handle);

/* ---- texts: length is the size of the buffer, the closing NUL included; longer texts are cut ---- */

/** Creates a text; initial may be null. Returns its handle, 0 after an error (3070). */
QM_API unsigned long long qmCreateStrVar(char scope, char const* name, long length, char const* initial);
/** Makes the buffer of length bytes a text variable. Returns whether the last error is 0 (3070). */
QM_API bool qmLinkStrVar(char scope, char const* name, char* buffer, long length);
/** Sets a text. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetStrVar(char scope, char const* name, char const* value);
/** Sets a text by handle. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetStrVarByHandle(unsigned long long handle, char const* value);
/** A text; null after an error (3060, 3090, 3210). It is the variable's own buffer: it changes with the
 *  variable and goes with it. */
QM_API char const* qmGetStrVarValue(char scope, char const* name);
/** A text by handle; else as qmGetStrVarValue. */
QM_API char const* qmGetStrVarValueByHandle(unsigned long long handle);

/* ---- arrays of numbers ---- */

/** Creates an array of zeros. Returns its handle, 0 after an error (3070, 3210). */
QM_API unsigned long long qmCreateNumArray(char scope, char const* name, long dims, long e1, long e2, long e3,
                                           long e4, long e5, long e6);
/** Makes the doubles at values an array. Returns whether the last error is 0 (3070, 3210). */
QM_API bool qmLinkNumArray(char scope, char const* name, double* values, long dims, long e1, long e2, long e3,
                           long e4, long e5, long e6);
/** Sets an element. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetNumArrayElement(char scope, char const* name, double value, long dims, long i1, long i2,
                                 long i3, long i4, long i5, long i6);
/** Sets an element by handle; else as qmSetNumArrayElement. */
QM_API bool qmSetNumArrayElementByHandle(unsigned long long handle, double value, long dims, long i1, long i2,
                                         long i3, long i4, long i5, long i6);
/** An element; 0.0 after an error (3060, 3090, 3210). */
QM_API double qmGetNumArrayElement(char scope, char const* name, long dims, long i1, long i2, long i3,
                                   long i4, long i5, long i6);
/** An element by handle; 0.0 after an error (3060, 3090, 3210). */
QM_API double qmGetNumArrayElementByHandle(unsigned long long handle, long dims, long i1, long i2, long i3,
                                           long i4, long i5, long i6);

/* ---- arrays of complex numbers: two doubles an element, real part first ---- */

/** Creates an array of zeros. Returns its handle, 0 after an error (3070, 3210). */
QM_API unsigned long long qmCreateComplexArray(char scope, char const* name, long dims, long e1, long e2,
                                               long e3, long e4, long e5, long e6);
/** Makes the pairs of doubles at values an array. Returns whether the last error is 0 (3070, 3210). */
QM_API bool qmLinkComplexArray(char scope, char const* name, double* values, long dims, long e1, long e2,
                               long e3, long e4, long e5, long e6);
/** Sets both parts of an element. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetComplexArrayElement(char scope, char const* name, double real, double imaginary, long dims,
                                     long i1, long i2, long i3, long i4, long i5, long i6);
/** Sets both parts of an element by handle; else as qmSetComplexArrayElement. */
QM_API bool qmSetComplexArrayElementByHandle(unsigned long long handle, double real, double imaginary,
                                             long dims, long i1, long i2, long i3, long i4, long i5, long i6);
/** Sets the real part of an element, of an array of numbers as well; else as qmSetComplexArrayElement. */
QM_API bool qmSetRealArrayElement(char scope, char const* name, double real, long dims, long i1, long i2,
                                  long i3, long i4, long i5, long i6);
/** Sets the real part of an element by handle; else as qmSetRealArrayElement. */
QM_API bool qmSetRealArrayElementByHandle(unsigned long long handle, double real, long dims, long i1, long i2,
                                          long i3, long i4, long i5, long i6);
/** Sets the imaginary part of an element; else as qmSetComplexArrayElement. */
QM_API bool qmSetImagArrayElement(char scope, char const* name, double imaginary, long dims, long i1, long i2,
                                  long i3, long i4, long i5, long i6);
/** Sets the imaginary part of an element by handle; else as qmSetComplexArrayElement. */
QM_API bool qmSetImagArrayElementByHandle(unsigned long long handle, double imaginary, long dims, long i1,
                                          long i2, long i3, long i4, long i5, long i6);
/** Writes both parts of an element to where real and imaginary point; zeros after an error (3060, 3090,
 *  3210). */
QM_API void qmGetComplexArrayElement(char scope, char const* name, double* real, double* imaginary, long dims,
                                     long i1, long i2, long i3, long i4, long i5, long i6);
/** Writes both parts of an element by handle; else as qmGetComplexArrayElement. */
QM_API void qmGetComplexArrayElementByHandle(unsigned long long handle, double* real, double* imaginary,
                                             long dims, long i1, long i2, long i3, long i4, long i5, long i6);

/* ---- arrays of truth values ---- */

/** Creates an array of false. Returns its handle, 0 after an error (3070, 3210). */
QM_API unsigned long long qmCreateBoolArray(char scope, char const* name, long dims, long e1, long e2,
                                            long e3, long e4, long e5, long e6);
/** Makes the truth values at values an array. Returns whether the last error is 0 (3070, 3210). */
QM_API bool qmLinkBoolArray(char scope, char const* name, bool* values, long dims, long e1, long e2, long e3,
                            long e4, long e5, long e6);
/** Sets an element. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetBoolArrayElement(char scope, char const* name, bool value, long dims, long i1, long i2,
                                  long i3, long i4, long i5, long i6);
/** Sets an element by handle; else as qmSetBoolArrayElement. */
QM_API bool qmSetBoolArrayElementByHandle(unsigned long long handle, bool value, long dims, long i1, long i2,
                                          long i3, long i4, long i5, long i6);
/** An element; false after an error (3060, 3090, 3210). */
QM_API bool qmGetBoolArrayElement(char scope, char const* name, long dims, long i1, long i2, long i3, long i4,
                                  long i5, long i6);
/** An element by handle; false after an error (3060, 3090, 3210). */
QM_API bool qmGetBoolArrayElementByHandle(unsigned long long handle, long dims, long i1, long i2, long i3,
                                          long i4, long i5, long i6);

/* ---- arrays of texts: length is the size of one element, the closing NUL included ---- */

/** Creates an array of empty texts. Returns its handle, 0 after an error (3070, 3210). */
QM_API unsigned long long qmCreateStrArray(char scope, char const* name, long length, long dims, long e1,
                                           long e2, long e3, long e4, long e5, long e6);
/** Makes the buffers of length bytes that follow one another at buffer an array. Returns whether the last
 *  error is 0 (3070, 3210). */
QM_API bool qmLinkStrArray(char scope, char const* name, char* buffer, long length, long dims, long e1,
                           long e2, long e3, long e4, long e5, long e6);
/** Sets an element. Stores nothing after an error (3060, 3090, 3210). */
QM_API bool qmSetStrArrayElement(char scope, char const* name, char const* value, long dims, long i1, long i2,
                                 long i3, long i4, long i5, long i6);
/** Sets an element by handle; else as qmSetStrArrayElement. */
QM_API bool qmSetStrArrayElementByHandle(unsigned long long handle, char const* value, long dims, long i1,
                                         long i2, long i3, long i4, long i5, long i6);
/** An element; null after an error (3060, 3090, 3210). It is the element's own buffer, as for
 *  qmGetStrVarValue. */
QM_API char const* qmGetStrArrayElement(char scope, char const* name, long dims, long i1, long i2, long i3,
                                        long i4, long i5, long i6);
/** An element by handle; else as qmGetStrArrayElement. */
QM_API char const* qmGetStrArrayElementByHandle(unsigned long long handle, long dims, long i1, long i2,
                                                long i3, long i4, long i5, long i6);

/* ---- all kinds ---- */

/** Handle of a variable, with a reference that qmReleaseVarHandle gives back; 0 if there is none. */
QM_API unsigned long long qmGetVarHandle(char scope, char const* name);

/** Gives back one reference that came with a handle, from creating or from qmGetVarHandle, so that the
 *  variable can be deleted. The handle goes on naming the variable while that lives. Returns false when
 *  handle names no variable, and when all references have been given back. */
QM_API bool qmReleaseVarHandle(unsigned long long handle);

/** Type letter of a variable; 'X' if there is none. */
QM_API char qmGetVarType(char scope, char const* name);

/** Type letter of the variable that handle names; 'X' if it names none. */
QM_API char qmGetVarTypeByHandle(unsigned long long handle);

/** Whether handle names a variable, an array included. */
QM_API bool qmIsVarHandle(unsigned long long handle);

/** Whether handle names an array. */
QM_API bool qmIsArrayHandle(unsigned long long handle);

/** Deletes a variable: with scope 'C' a process-wide one, with any other one of the current context.
 *  Returns 0 or the error, which is also the last error: 3220 no such variable, 3440 a handle or an
 *  expression still refers to it. */
QM_API long qmDeleteVar(char scope, char const* name);

/* ======================================================================================================
 * Defining operators
 *
 * Operators of the host are used in expressions like the library's own. Their arguments:
 *  scope       'C' for all contexts, any other for the current one; one name may stand in both, and the
 *              process-wide one is found first
 *  name        1 to 64 characters of any kind; one that no text can spell is allowed, and no text names it
 *  fix         "prefix", "infix", "postfix" or "nofix". A nofix operator stands alone in its statement; what
 *              has no operands and stands in expressions is a prefix operator without parameters, written
 *              with empty parentheses
 *  returns     "number", "complex", "string", "boolean" or "void"
 *  parameters  type word and name of each, as in "number x, string s", parted by ',' (by ';' where the
 *              decimal point is a comma); null or empty for none
 *  precedence  an operator whose precedence to borrow; that of functions when it names none. With that of a
 *              sign (as "-" and "!" give it), a sign before the right operand needs parentheses
 * They return 0 or the error, which is also the last error; 0 without a context.
 *  errors      3300 name missing, 3310 too long, 3320 taken; 3330, 3340 fix word missing, unknown; 3350,
 *              3360 return word missing, unknown; 3370 unknown parameter type; 3380 not entered;
 *              3230 no memory, and nothing is entered
 * ====================================================================================================== */

/** Defines an operator by an expression over its parameters, which are bound by reference. With text null
 *  the operator waits for its body (qmDefineExpOpStr), which may then name the operator itself. Errors of
 *  reading the text (2010 to 2080, 3030 for an empty one, 3190, 3200) end the definition too. */
QM_API long qmDefineExpOp(char scope, char const* name, char const* fix, char const* returns,
                          char const* parameters, char const* precedence, char const* text);

/** Gives an operator that was declared without a body its text.
 *  errors  3220 no such operator, 3320 it has a body, 3390 it waits for none, 3410 text null; those of
 *          reading the text */
QM_API long qmDefineExpOpStr(char scope, char const* name, char const* text);

/** qmDefineExpOp with the content of the file at path as text; without a body when path is null. 3220 when
 *  the file cannot be read. */
QM_API long qmReadExpOp(char scope, char const* name, char const* fix, char const* returns,
                        char const* parameters, char const* precedence, char const* path);

/** qmDefineExpOpStr with the content of the file at path as text. 3220 when the file cannot be read; with
 *  path null nothing happens, and the last error is returned. */
QM_API long qmReadExpOpStr(char scope, char const* name, char const* path);

/** Defines an operator by a function of the host. It is called on the evaluating thread with the operator's
 *  handle, by which it reads its parameters and sets its result, and returns 0 to go on, 1000 to end the
 *  evaluation with this result (in the body of an operator: the body), or the error that ends the
 *  evaluation. It may evaluate and define in the same context, and evaluate the parsed expression that it
 *  stands in: runs of one expression share its variables and nothing else.
 *  errors  3400 callback missing */
QM_API long qmLinkCallbackOp(char scope, char const* name, char const* fix, char const* returns,
                             char const* parameters, char const* precedence,
                             int32_t (*callback)(unsigned long long handle));

/** Deletes an operator of the host. Expressions parsed before go on with all definitions that they can come
 *  to, also when the name is defined anew; those that other operators name are not found by new texts.
 *  errors  3220 no such operator, 3420 the operator is the library's own */
QM_API long qmDeleteOp(char scope, char const* name);

/* ======================================================================================================
 * Inside a callback
 *
 * handle is what the callback was called with; it is good until the callback returns, on the thread that was
 * called: others wait until the evaluation has ended. While another run of the same expression calls back
 * from the same place, it answers for that call. Parameters count from 0. An index out of range makes the
 * last error 3190, a parameter of another type 3090. Any other handle gives 0, 0.0, false or null, and 3220
 * from the functions that set the result. Each function has a second name.
 * ====================================================================================================== */

/** Number of parameters. */
QM_API long qmGetParmCount(unsigned long long handle);
/** The same as qmGetParmCount. */
QM_API long QMU_GetParameterCount(unsigned long long handle);

/** Types of all parameters, a letter each: 'N', 'C', 'S' and 'B'. Lives until the callback returns. */
QM_API char const* qmGetParmSig(unsigned long long handle);
/** The same as qmGetParmSig. */
QM_API char const* QMU_GetParameterSignature(unsigned long long handle);

/** Type letter of a parameter; 'X' for an index out of range. */
QM_API char qmGetParmType(unsigned long long handle, long index);
/** The same as qmGetParmType. */
QM_API char QMU_GetParameterType(unsigned long long handle, long index);

/** A number, or the real part of a complex number. */
QM_API double qmGetNumParm(unsigned long long handle, long index);
/** The same as qmGetNumParm. */
QM_API double QMU_GetNumericParameter(unsigned long long handle, long index);

/** The real part of a parameter. */
QM_API double qmGetRealParm(unsigned long long handle, long index);
/** The same as qmGetRealParm. */
QM_API double QMU_GetRealParameter(unsigned long long handle, long index);

/** The imaginary part of a parameter; 0.0 for a real number. */
QM_API double qmGetImagParm(unsigned long long handle, long index);
/** The same as qmGetImagParm. */
QM_API double QMU_GetImaginaryParameter(unsigned long long handle, long index);

/** A truth value. */
QM_API bool qmGetBoolParm(unsigned long long handle, long index);
/** The same as qmGetBoolParm. */
QM_API bool QMU_GetBooleanParameter(unsigned long long handle, long index);

/** A text; null after an error. Lives until the same parameter is asked for again or the callback
 *  returns. */
QM_API char const* qmGetStrParm(unsigned long long handle, long index);
/** The same as qmGetStrParm. */
QM_API char const* QMU_GetStringParameter(unsigned long long handle, long index);

/** Sets the result. Returns 0; 3090 when the operator returns no number. */
QM_API long qmSetNumResult(unsigned long long handle, double value);
/** The same as qmSetNumResult. */
QM_API long QMU_SetNumericResult(unsigned long long handle, double value);

/** Sets the real part of the result. Returns 0; 3090 when the operator returns no number. */
QM_API long qmSetRealResult(unsigned long long handle, double value);
/** The same as qmSetRealResult. */
QM_API long QMU_SetRealResult(unsigned long long handle, double value);

/** Sets the imaginary part of the result. Returns 0; 3090 when the operator returns no number. */
QM_API long qmSetImagResult(unsigned long long handle, double value);
/** The same as qmSetImagResult. */
QM_API long QMU_SetImaginaryResult(unsigned long long handle, double value);

/** Sets the result. Returns 0; 3090 when the operator returns no truth value. */
QM_API long qmSetBoolResult(unsigned long long handle, bool value);
/** The same as qmSetBoolResult. */
QM_API long QMU_SetBooleanResult(unsigned long long handle, bool value);

/** Sets the result; the text is copied. Returns 0; 3090 when the operator returns no text; 3230 without
 *  memory, and then the evaluation fails with it whatever the callback returns. */
QM_API long qmSetStrResult(unsigned long long handle, char const* value);
/** The same as qmSetStrResult. */
QM_API long QMU_SetStringResult(unsigned long long handle, char const* value);

/* ======================================================================================================
 * Numeric helpers
 *
 * They need no context and no start of the library, keep nothing, and may be called by any number of
 * threads.
 * ====================================================================================================== */

/** Square root of x^2 + y^2, without overflow on the way. */
QM_API double QMU_Hypotenuse(double x, double y);
/** Angle of x + yi in radians, from -pi to pi. */
QM_API double QMU_ComplexArg(double x, double y);
/** ln(1 + x), exact for small x too. */
QM_API double QMU_Log1P(double x);
/** ln |x + yi|, without overflow on the way. */
QM_API double QMU_ComplexLogAbs(double x, double y);
/** Replaces *real + *imaginary i by its reciprocal. Does nothing when either is null. */
QM_API void QMU_ComplexReciprocal(double* real, double* imaginary);
/** x (x-1) (x-2) ... over all factors above 1; 1 for x up to 1. */
QM_API double QMU_Factorial(double x);

/** Inverse hyperbolic sine. */
QM_API double QMU_ArcHyperSine(double x);
/** Inverse hyperbolic cosine; NaN below 1. */
QM_API double QMU_ArcHyperCosine(double x);
/** Inverse hyperbolic tangent; an infinity at 1 and -1, NaN beyond. */
QM_API double QMU_ArcHyperTangent(double x);

/** Sine of an angle in degrees by 16.16 fixed-point arithmetic; the error is of the order of 1e-4 for
 *  angles from -90 to 90. */
QM_API double QMU_Sine(double degrees);
/** Cosine, like QMU_Sine. */
QM_API double QMU_Cosine(double degrees);
/** Tangent, like QMU_Sine; 0 where the sine is 0. */
QM_API double QMU_Tangent(double degrees);

/* ======================================================================================================
 * Numbers in other bases
 *
 * They need no context either. Bases are letters, capital or small: 'B' 2, 'O' 8, 'D' 10, 'T' 12, 'H' 16;
 *   'x' is
 * 16 as well. A digit table holds the digits in order of their values. Null pointers give null, 0 or false.
 * ====================================================================================================== */

/** Radix and digit table of a base letter. The table is the library's: do not write to it.
 *  returns  false for any other letter; radix is then 0 and digits null */
QM_API bool QMU_GetBaseConversionConstants(char base, QM_REF(long) radix, QM_REF(char*) digits);

/** Writes value to out: "0", the letter of the base (b, o, d, t or x), the integer digits, the point and
 *  the fraction digits; 10 in base 16 is 0xA.0. A negative number has no sign: its integer part is written
 *  as a 64-bit two's complement pattern.
 *  radixMark  'C' for a comma as point, any other for a period
 *  precision  one digit more than this is written at most; none at all when it is negative
 *  out        room for the text: 69 characters for the integer part, point and NUL included, and the
 *             fraction digits, of which a double has 1075 at most
 *  returns    out; null when out is null or the base is none */
QM_API char* QMU_ConvertNumberFromBaseTen(double value, char base, char radixMark, int precision, char* out);

/** Writes the digits of n to out, which has room for 65 characters; none for 0. Returns out. */
QM_API char* QMU_ConvertIntegerFromBaseTen(unsigned long long n, long radix, char const* digits, char* out);

/** Writes up to precision + 1 digits of fraction to out, at least one; none when precision is negative.
 *  Returns out. */
QM_API char* QMU_ConvertFractionFromBaseTen(double fraction, long radix, char const* digits, int precision,
                                            char* out);

/** The value of a literal: a base letter, digits, perhaps with a point, perhaps an exponent ('X', or 'E'
 *  where that is no digit).
 *  isInteger  set to whether the digits had no point
 *  flag       set to false
 *  returns    the value; 0.0 for a text that begins with no base letter */
QM_API double QMU_ConvertNumberToBaseTen(char const* text, QM_REF(bool) isInteger, QM_REF(bool) flag);

/** The value of integer digits, summed up in a double. */
QM_API double QMU_ConvertIntegerToBaseTenDouble(char const* digits, long radix, char const* table);

/** The value of integer digits, modulo 2^64. */
QM_API unsigned long long QMU_ConvertIntegerToBaseTenLong(char const* digits, long radix, char const* table);

/** The value of the digits behind the point. */
QM_API double QMU_ConvertFractionToBaseTen(char const* digits, long radix, char const* table);

/* ======================================================================================================
 * The process-wide frame
 *
 * For hosts that look into the library's lists of contexts and threads. The two types are opaque: their
 * pointers can be compared and handed back, and are good until the context or the record is destroyed.
 * ====================================================================================================== */

/** A context. */
struct SQMContext;
/** What the library knows of a thread. */
struct SQMThread;

/** The calling thread's record, made when it has none; null after unloading and when memory is exhausted.
 *  create   also gives the thread a current context when it has none */
QM_API struct SQMThread* uGetThreadInfo(bool create);

/** The public context of that name; null if none. */
QM_API struct SQMContext* uFindExecutor(char const* name);

/** Whether context is one of the public contexts. Any pointer may be asked about. */
QM_API bool uIsExecutor(struct SQMContext const* context);

/** The same as qmDestroyPublicContext. */
QM_API bool uDropExecutor(char const* name);

/** Destroys the record that stands before the calling thread's own in the list of threads, in order of
 *  their first calls, and never the caller's own. Nothing happens when the caller stands first or not in
 *  the list.
 *  returns  whether the list had a record
 *  threads  the thread whose record goes must not be in a call */
QM_API bool uDropThreadInfo(void);

/** Locks the list of public contexts. While a thread holds it, calls of other threads that use the list
 *  wait; the holder itself may call the library, unless another thread holds the other list. Each locking
 *  wants an unlocking. */
QM_API void uAcquireExecutorList(void);
/** Unlocks the list of public contexts. Does nothing in a thread that has not locked it. */
QM_API void uReleaseExecutorList(void);

/** Locks the list of thread records; else as uAcquireExecutorList. */
QM_API void uAcquireThreadList(void);
/** Unlocks the list of thread records; else as uReleaseExecutorList. */
QM_API void uReleaseThreadList(void);

/** The same as qmUnloadQumel. */
QM_API bool uCleanUp(void);

#ifdef __cplusplus
}
#endif

#endif
