// Loading a plug-in where it can do no harm.
#include "bench/headunit/pluginfile.h"

#include <canservicebase.h>
#include <serialport.h>

#include <QFile>
#include <QPluginLoader>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr unsigned kLongest = 10; // s

// What stands before the child's answer: nothing that the dynamic loader prints has it.
constexpr char kAnswer = '\0';
enum Answer : char { ClassName = 'C', Problem = 'P' };

QByteArray load(const QString &file)
{
    QPluginLoader loader(file);
    // All symbols at once: a missing one shall show here, not at its first call.
    loader.setLoadHints(loader.loadHints() | QLibrary::ResolveAllSymbolsHint);
    const QObject *root = loader.instance();
    if (!root)
        return Problem + loader.errorString().toUtf8();
    if (!qobject_cast<const CanServiceBase *>(root))
        return Problem + QByteArray("its object does not offer the interface '") +
               qobject_interface_iid<CanServiceBase *>() + '\'';
    return ClassName + QByteArray(root->metaObject()->className());
}

// The child. Nothing of the parent may end with it: neither buffers nor files that it holds.
[[noreturn]] void tryHere(const QString &file, int output)
{
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    for (const int number : {SIGALRM, SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE})
        static_cast<void>(std::signal(number, SIG_DFL));
    alarm(kLongest);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    canservice::SerialPort::setDefaultDevice(QString());
    const QByteArray answer = kAnswer + load(file);
    const ssize_t size = ::write(output, answer.constData(), static_cast<size_t>(answer.size()));
    _exit(size == answer.size() ? 0 : 1);
}

QString explained(const QString &error)
{
    if (error.contains(QLatin1String("undefined symbol")))
        return QStringLiteral("a symbol that it needs is missing, so it was built against another "
                              "host library: ") +
               error;
    if (error.contains(QLatin1String("cannot open shared object file")))
        return QStringLiteral("a library that it needs is not found; see LD_LIBRARY_PATH: ") +
               error;
    return error;
}

// How a child ended that did not answer.
QString ending(int status, const QByteArray &output)
{
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        return QStringLiteral("loading it takes longer than %1 s").arg(kLongest);
    const QString how =
        WIFSIGNALED(status)
            ? QString::fromLatin1(sigdescr_np(WTERMSIG(status)))
            : QStringLiteral("exit code %1").arg(WIFEXITED(status) ? WEXITSTATUS(status) : 0);
    const QString said = QString::fromUtf8(output.trimmed().split('\n').constLast());
    return QStringLiteral("loading it ends the program (%1): it is damaged, or its code fails as "
                          "it is loaded%2")
        .arg(how, said.isEmpty() ? said : QStringLiteral(": ") + said);
}

} // namespace

QString tryLoading(const QString &file, QString *className)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return QStringLiteral("it cannot be tried: ") + qt_error_string(errno);
    const pid_t child = fork();
    if (child == 0)
        tryHere(file, ends[1]);
    const int error = errno;
    close(ends[1]);
    QFile pipe;
    pipe.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    if (child < 0)
        return QStringLiteral("it cannot be tried: ") + qt_error_string(error);
    const QByteArray output = pipe.readAll();
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }

    const int at = output.lastIndexOf(kAnswer);
    if (at < 0 || at + 1 == output.size())
        return ending(status, output);
    const QString answer = QString::fromUtf8(output.mid(at + 2));
    if (output.at(at + 1) != ClassName)
        return explained(answer);
    *className = answer;
    return {};
}

} // namespace bench
