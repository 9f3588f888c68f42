// scripts/demo as a newcomer runs it, on the test display and sound server: the
// demo server it starts or finds, the sign-in it makes, the music it plays, and
// Ctrl+C stopping what it started and nothing else. The build and the media are
// the suite's own (ZELMAR_DEMO_PLAYER, ZELMAR_REFERENCE_SERVICE and the content
// the make_demo_content test made), so nothing is built or synthesised here.

#include "tests/support/pcm_analysis.h"
#include "tests/support/reference_service.h"
#include "tests/support/sink_recorder.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <memory>
#include <signal.h>

namespace {

// A null sink's silence is exact zeros; the demo's quietest music is far above this.
constexpr double HeardLevel = 0.001;
// The player downloads the first track from the service before it is heard.
constexpr int FirstSoundTimeoutMs = 60000;

bool PortAnswers(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    return socket.waitForConnected(Tests::Timeouts::Quick);
}

int FreePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}

} // namespace

class TestDemoScript : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void playsTheDemoAndStopsOnCtrlC_data();
    void playsTheDemoAndStopsOnCtrlC();

private:
    bool Heard(double fromSeconds) const;

    QString mContent;
    std::unique_ptr<Tests::TestDataDirectory> mData;
    std::unique_ptr<Tests::SinkRecorder> mSink;
};

void TestDemoScript::initTestCase()
{
    mContent = qEnvironmentVariable("ZELMAR_DEMO_CONTENT");
    QVERIFY2(QFileInfo::exists(mContent + QStringLiteral("/manifest.json")),
             "the demo content is missing: the make_demo_content test makes it");
    QVERIFY2(QFileInfo(qEnvironmentVariable("ZELMAR_DEMO_PLAYER")).isExecutable(), "ZELMAR_DEMO_PLAYER");
    QVERIFY2(QFileInfo(Tests::ReferenceService::ExecutablePath()).isExecutable(), "ZELMAR_REFERENCE_SERVICE");
}

void TestDemoScript::init()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    mSink = std::make_unique<Tests::SinkRecorder>(qEnvironmentVariable("ZELMAR_TEST_SINK_A"));
    QVERIFY2(mSink->Start(), qPrintable(mSink->ErrorString()));
}

void TestDemoScript::cleanup()
{
    mSink.reset();
    mData.reset();
}

bool TestDemoScript::Heard(double fromSeconds) const
{
    const double to = mSink->SecondsRecorded();
    return to - fromSeconds >= 0.5 && Tests::PcmAnalysis::Rms(mSink->Samples(), to - 0.5, to) > HeardLevel;
}

void TestDemoScript::playsTheDemoAndStopsOnCtrlC_data()
{
    QTest::addColumn<bool>("serviceRunning");

    QTest::newRow("starts its own demo server") << false;
    QTest::newRow("uses the demo server already running") << true;
}

void TestDemoScript::playsTheDemoAndStopsOnCtrlC()
{
    QFETCH(bool, serviceRunning);

    // The service the script starts has no control API of ours: the one found
    // running is this test's, whose request log shows the sign-in.
    std::unique_ptr<Tests::ReferenceService> service;
    int port = 0;
    if (serviceRunning) {
        service = std::make_unique<Tests::ReferenceService>(
            Tests::ReferenceService::SourceDirectory() + QStringLiteral("/demo/scenario"), mContent);
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        port = service->Port();
    } else {
        port = FreePort();
        QVERIFY(port > 0);
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZELMAR_DEMO_PORT"), QString::number(port));
    environment.insert(QStringLiteral("ZELMAR_DATA_DIR"), mData->Path());
    QProcess demo;
    demo.setProcessEnvironment(environment);
    demo.setProcessChannelMode(QProcess::MergedChannels);
    const double quietUntil = mSink->SecondsRecorded();
    demo.start(Tests::ReferenceService::SourceDirectory() + QStringLiteral("/scripts/demo"), QStringList());
    QVERIFY2(demo.waitForStarted(Tests::Timeouts::Process), qPrintable(demo.errorString()));

    QTRY_VERIFY2_WITH_TIMEOUT(Heard(quietUntil) || demo.state() == QProcess::NotRunning,
                              qPrintable(QString::fromLocal8Bit(demo.readAll())), FirstSoundTimeoutMs);
    QVERIFY2(demo.state() == QProcess::Running, qPrintable(QString::fromLocal8Bit(demo.readAll())));
    QVERIFY(PortAnswers(port));
    if (service) {
        const QJsonArray signIns = service->Received(QStringLiteral("sign_ins"));
        QCOMPARE(signIns.size(), 1);
        QCOMPARE(signIns.first().toObject().value(QStringLiteral("code")).toString(),
                 QStringLiteral("demo-cafe"));
    }

    // Ctrl+C: the player stops, and with it the sound; a server the script started
    // goes too, one it found stays.
    QCOMPARE(::kill(static_cast<pid_t>(demo.processId()), SIGINT), 0);
    QVERIFY(demo.waitForFinished(Tests::Timeouts::Process));
    const double stoppedAt = mSink->SecondsRecorded();
    QTRY_VERIFY_WITH_TIMEOUT(mSink->SecondsRecorded() - stoppedAt > 1.0 &&
                                 Tests::PcmAnalysis::Rms(mSink->Samples(), mSink->SecondsRecorded() - 1.0,
                                                         mSink->SecondsRecorded()) == 0.0,
                             Tests::Timeouts::Process);
    QCOMPARE(PortAnswers(port), serviceRunning);
}

QTEST_GUILESS_MAIN(TestDemoScript)

#include "tst_demo_script.moc"
