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
        // Anything that does not read as a level from 0 to 3 keeps the default.
        for (const char* value :
             {"", "abc", "9", "4", "-1", " 1", "1 ", "1.0", "99999999999999999999999"}) {
            QTest::addRow("'%s'", value) << true << QByteArray(value) << 2;
        }
        for (const auto& [value, level] :
             {std::pair("+1", 1), {"0", 0}, {"1", 1}, {"2", 2}, {"3", 3}}) {
            QTest::addRow("%s", value) << true << QByteArray(value) << level;
        }
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
        logger.log(text + " info", LogLevel::info);
        logger.log(text + " debug", LogLevel::debug);
        logger.log(text + " error", LogLevel::error);
        logger.log(text + " fault", LogLevel::fault);
        const QList<QPair<QtMsgType, QString>> expected = QList<QPair<QtMsgType, QString>>{
            {QtInfoMsg, text + " info"},
            {QtDebugMsg, text + " debug"},
            {QtWarningMsg, text + " error"},
            {QtCriticalMsg, text + " fault"}}.mid(level);
        QCOMPARE(capture.lines(), expected);
        qunsetenv(Logger::kLevelVariable);
    }
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "tst_logger.moc"
