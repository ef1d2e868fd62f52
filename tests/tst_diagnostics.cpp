// The log lines: their form, their items, and that none is evaluated while its level is off.
#include "servicetest.h"

#include "protocol/diagnostics.h"

#include <configmanager.h>

#include <cstdlib>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

int sPathsAsked = 0;

// Made before Qt's own and so at work after them: a crash fails the program.
struct LateCaller
{
    ~LateCaller()
    {
        if (QLoggingCategory::defaultCategory())
            std::abort();
        LOG_DEBUG() << "late";
        LOG_ERROR() << "late";
    }
} theLateCaller;

} // namespace

// Takes the place of the library's function, to see who asks.
QString canservice::ConfigManager::getPluginFullPath()
{
    ++sPathsAsked;
    return QStringLiteral("/opt/plug-in.so");
}

class DiagnosticsTest : public QObject
{
    Q_OBJECT

private slots:
    // Words and numbers, texts and bytes, which are quoted, and an error without words.
    void linesHaveOneForm()
    {
        CanBusManager::instance()->setHwdCarModelIndex(0x1234);
        ServiceTest test;
        const LogCapture log;
        QByteArray payload;
        test.service.requestVersion();
        test.timeout("onCartypeConnect");
        test.dispatch(0x30, "V1");
        test.timeout("onmParseOutTmrout");
        test.service.doPanelKey(0, payload);

        const QStringList expected{
            "[DBG] requestVersion()-- reques varne_Ford Version",
            "[DBG] onCartypeConnect()-- 4660 52",
            "[DBG] dispatchEvent(int, QByteArray&)-- 48 \"5631\"",
            "[DBG] doVersion(int, QByteArray&)-- \"V1\"",
            "[DBG] doVersion(int, QByteArray&)-- 0",
            "[DBG] onmParseOutTmrout()-- parse out!!! 0",
            "[ERR] doPanelKey(int, QByteArray&)--",
        };
        QStringList shortened;
        for (const LogCapture::Line &line : log.lines()) {
            const QString tag = line.type == QtDebugMsg ? "[DBG] " : "[ERR] ";
            const QString function =
                QString(line.function).section("void canservice::SimpleService::", 1);
            const QString head = tag + QString("%1 void canservice::SimpleService::%2 %3 ")
                                           .arg(syscall(SYS_gettid))
                                           .arg(function)
                                           .arg(line.line);
            QVERIFY2(line.text.startsWith(head) && line.line > 0, qPrintable(line.text));
            QCOMPARE(line.file, QByteArray("simpleservice"));
            shortened << tag + function + line.text.mid(head.size());
        }
        QCOMPARE(shortened, expected);
    }

    void everyThreadHasItsId()
    {
        LogCapture log;
        const auto tellsItsId = [&log] {
            LOG_DEBUG() << "here";
            const QString head = QString("[DBG] %1 ").arg(syscall(SYS_gettid));
            return log.lines().back().text.startsWith(head);
        };
        QVERIFY(tellsItsId());
        std::thread([&] { QVERIFY(tellsItsId()); }).join();

        const pid_t child = fork();
        if (child == 0)
            _exit(tellsItsId() ? 0 : 1);
        int status = -1;
        QCOMPARE(waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }

    // In a build without NDEBUG.
    void aForeignThreadIsToldOfOnce()
    {
        ServiceTest test;
        LogCapture log(false);
        std::thread([&test] {
            test.service.version();
            test.service.getCarSettingData();
        }).join();
        test.service.version();
#ifdef NDEBUG
        QCOMPARE(log.lines().size(), 0U);
#else
        QCOMPARE(log.lines().size(), 1U);
        QVERIFY(log.items()[0].startsWith("called from another thread; call the service"));
#endif
    }

    void aLevelThatIsOffEvaluatesNothing()
    {
        QLoggingCategory &category = *QLoggingCategory::defaultCategory();
        ServiceTest test;
        LogCapture log(false);
        for (const bool errors : {true, false}) { // Errors have a level of their own.
            category.setEnabled(QtCriticalMsg, errors);
            int evaluated = 0;
            sPathsAsked = 0;
            test.receive(hex("2e250105d4 2e250105d5"));
            LOG_DEBUG() << ++evaluated;
            LOG_ERROR() << ++evaluated;
            QCOMPARE(sPathsAsked, 0);
            QCOMPARE(evaluated, errors ? 1 : 0);
            QCOMPARE(log.items(), QStringList({"checksum err!", "1"}));
        }
        category.setEnabled(QtCriticalMsg, true);
    }

    void aChunkAsksForTheLevelOnce()
    {
        ServiceTest test;
        LogCapture log(false);
        sPathsAsked = 0;
        connect(&test.service, &CanServiceBase::notifyCanbusStatus, this,
                [] { QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, true); });
        test.receive(hex("2e250105d4 000000"));
        QCOMPARE(log.items(), QStringList{"ID IS ERROR! 37"});
        test.receive(hex("00"));
        QCOMPARE(log.items().mid(1), QStringList({"\"/opt/plug-in.so\"", "\"00\"", "0"}));
        QCOMPARE(sPathsAsked, 1);
    }
};

QTEST_GUILESS_MAIN(DiagnosticsTest)
#include "tst_diagnostics.moc"
