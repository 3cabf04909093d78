#include <QTest>

#include "Services/Logger.h"
#include "TestSupport.h"

using namespace LumoraSDK;

class LoggerTest : public QObject {
    Q_OBJECT

private slots:
    void thresholdComesFromTheEnvironment_data() {
        QTest::addColumn<bool>("set");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<int>("level");
        QTest::newRow("unset") << false << QByteArray() << 2;
        QTest::newRow("empty") << true << QByteArray("") << 2;
        QTest::newRow("abc") << true << QByteArray("abc") << 2;
        QTest::newRow("9") << true << QByteArray("9") << 2;
        QTest::newRow("4") << true << QByteArray("4") << 2;
        QTest::newRow("-1") << true << QByteArray("-1") << 2;
        QTest::newRow("leading blank") << true << QByteArray(" 1") << 2;
        QTest::newRow("trailing blank") << true << QByteArray("1 ") << 2;
        QTest::newRow("1.0") << true << QByteArray("1.0") << 2;
        QTest::newRow("huge") << true << QByteArray("99999999999999999999999") << 2;
        QTest::newRow("+1") << true << QByteArray("+1") << 1;
        QTest::newRow("0") << true << QByteArray("0") << 0;
        QTest::newRow("1") << true << QByteArray("1") << 1;
        QTest::newRow("2") << true << QByteArray("2") << 2;
        QTest::newRow("3") << true << QByteArray("3") << 3;
    }

    void thresholdComesFromTheEnvironment() {
        QFETCH(bool, set);
        QFETCH(QByteArray, value);
        QFETCH(int, level);
        if (set) {
            qputenv(Logger::kLevelVariable, value);
        } else {
            qunsetenv(Logger::kLevelVariable);
        }
        Logger logger;
        QCOMPARE(static_cast<int>(logger.logLevel()), level);

        // Every line at or above the threshold arrives unchanged, with its message type.
        LumoraTest::LogCapture capture;
        const QString text = QStringLiteral("LumoraSDK.Lumora - 100% %s %d \"quoted\" ünïcode");
        logger.log(text + QStringLiteral(" info"), LogLevel::info);
        logger.log(text + QStringLiteral(" debug"), LogLevel::debug);
        logger.log(text + QStringLiteral(" error"), LogLevel::error);
        logger.log(text + QStringLiteral(" fault"), LogLevel::fault);
        const QList<QPair<QtMsgType, QString>> expected = QList<QPair<QtMsgType, QString>>{
            {QtInfoMsg, text + QStringLiteral(" info")},
            {QtDebugMsg, text + QStringLiteral(" debug")},
            {QtWarningMsg, text + QStringLiteral(" error")},
            {QtCriticalMsg, text + QStringLiteral(" fault")}}.mid(level);
        QCOMPARE(capture.lines(), expected);
        qunsetenv(Logger::kLevelVariable);
    }
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "tst_logger.moc"
