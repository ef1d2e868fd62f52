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
#include <QMessageLogger>
#include <QStringList>

#include <sys/syscall.h>
#include <unistd.h>

namespace diagnostics {

#ifdef CANSERVICE_NO_DIAGNOSTICS
constexpr bool debugEnabled() { return false; }
constexpr bool errorEnabled() { return false; }
#else
inline bool debugEnabled() { return QLoggingCategory::defaultCategory()->isDebugEnabled(); }
inline bool errorEnabled() { return QLoggingCategory::defaultCategory()->isCriticalEnabled(); }
#endif

/// The calling thread's id in the kernel, asked once per thread.
inline long threadId()
{
    thread_local const long id = syscall(SYS_gettid);
    return id;
}

/// Writes what every line begins with.
inline QDebug begin(QDebug line, const char *tag, const char *signature, int number)
{
    line << tag << threadId() << signature << number << "--";
    return line;
}

} // namespace diagnostics

#define LOG_LINE(enabled, level, tag)                                                              \
    for (bool on = (enabled); on; on = false)                                                      \
    diagnostics::begin(QMessageLogger("simpleservice", __LINE__, Q_FUNC_INFO).level(), tag,        \
                       Q_FUNC_INFO, __LINE__)

#define LOG_DEBUG() LOG_LINE(diagnostics::debugEnabled(), debug, "[DBG]")
#define LOG_ERROR() LOG_LINE(diagnostics::errorEnabled(), critical, "[ERR]")

/// For a loop, which asks for the level once.
#define LOG_DEBUG_IF(enabled) LOG_LINE(enabled, debug, "[DBG]")
