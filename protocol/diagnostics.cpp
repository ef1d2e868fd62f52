// How a log line begins. Out of line: the code would stand at each of the service's many log lines.
#include "protocol/diagnostics.h"

#include <QMessageLogger>
#include <QThread>

#include <atomic>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace diagnostics {

namespace {

constexpr char kFile[] = "simpleservice";

// Asked of the kernel once per thread, and once more in a child that was forked from it.
thread_local long theThreadId = 0;

long threadId()
{
    static const int watched = pthread_atfork(nullptr, nullptr, [] { theThreadId = 0; });
    if (theThreadId == 0 || watched != 0)
        theThreadId = syscall(SYS_gettid);
    return theThreadId;
}

QDebug begin(QDebug line, const char *tag, const char *signature, int number)
{
    line << tag << threadId() << signature << number << "--";
    return line;
}

} // namespace

QDebug debugLine(const char *signature, int number)
{
    return begin(QMessageLogger(kFile, number, signature).debug(), "[DBG]", signature, number);
}

QDebug errorLine(const char *signature, int number)
{
    return begin(QMessageLogger(kFile, number, signature).critical(), "[ERR]", signature, number);
}

#ifndef NDEBUG
bool isFirstForeignCall(const QObject &timer)
{
    static std::atomic_flag told = ATOMIC_FLAG_INIT;
    return QThread::currentThread() != timer.thread() && !told.test_and_set();
}
#endif

} // namespace diagnostics
