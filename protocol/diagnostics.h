// The service's log lines.
//
//   LOG_DEBUG() << "parse out!!!" << mParseState;
//   LOG_ERROR();
//
// A line goes to Qt's default logging category with the file name `simpleservice`, the line number
// and the signature of the writing function. It reads
//
//   [DBG] <kernel thread id> <signature> <line> -- <the line's own items>
//
// or [ERR] for an error. While the category has the level off, a line is one branch: nothing after
// the macro is evaluated.
#pragma once

#include <QByteArray>
#include <QDebug>
#include <QLoggingCategory>
#include <QStringList>

namespace diagnostics {

#ifdef CANSERVICE_NO_DIAGNOSTICS
constexpr bool debugEnabled() { return false; }
constexpr bool errorEnabled() { return false; }
#else
// When the process ends, static objects that outlive Qt's find no category.
inline bool debugEnabled()
{
    const QLoggingCategory *category = QLoggingCategory::defaultCategory();
    return category != nullptr && category->isDebugEnabled();
}
inline bool errorEnabled()
{
    const QLoggingCategory *category = QLoggingCategory::defaultCategory();
    return category != nullptr && category->isCriticalEnabled();
}
#endif

/// A line with what every line begins with; its own items follow. \p signature is of the writing
/// function, \p number of the source line.
QDebug debugLine(const char *signature, int number);
QDebug errorLine(const char *signature, int number);

} // namespace diagnostics

#define LOG_LINE(enabled, newLine)                                                                 \
    for (bool on = (enabled); on; on = false)                                                      \
    diagnostics::newLine(Q_FUNC_INFO, __LINE__)

#define LOG_DEBUG() LOG_LINE(diagnostics::debugEnabled(), debugLine)
#define LOG_ERROR() LOG_LINE(diagnostics::errorEnabled(), errorLine)

// In a debug build a service tells of the first call from another thread than the one it was made
// in, where its timers stay even when it is moved. Everything runs there: nothing is locked.
#ifdef NDEBUG
#    define CHECK_THREAD()
#else
#    define CHECK_THREAD()                                                                         \
        if (diagnostics::isFirstForeignCall(mSendTmr))                                             \
        LOG_ERROR() << "called from another thread; call the service where it was made"
namespace diagnostics {
bool isFirstForeignCall(const QObject &timer);
}
#endif

/// For a loop, which asks for the level once.
#define LOG_DEBUG_IF(enabled) LOG_LINE(enabled, debugLine)
