#include "core/vendor/vlc_wrapper.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QApplication>
#include <QTest>
#include <QUrl>
#include <QWidget>

using Core::Vendor::VlcStatus;
using Core::Vendor::VlcWrapper;

// A video given a widget where there is no X server (the offscreen platform, as
// under a Wayland session without XWayland) has no X window to go into. libvlc
// then went down its list of video outputs to the terminal's (colour ASCII art,
// which a TERM in the environment lets open) and crashed the process. The video
// plays to its end without a picture instead.
class VlcVideoWithoutXTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Before libvlc starts: a terminal it could draw on.
        qputenv("TERM", "xterm");
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("offscreen"));
        QVERIFY2(VlcWrapper::GetVlcInstance() != nullptr, "libvlc did not start: are its plugins installed?");
    }

    void aVideoPlaysToItsEndWithoutAPicture()
    {
        QWidget widget;
        widget.resize(320, 240);
        widget.show();
        VlcWrapper player;
        player.SetVideoOutput(&widget);
        player.SetMedia(QUrl::fromLocalFile(Tests::TestMedia::Path(QStringLiteral("video_short.mp4"))));
        player.Play();
        QTRY_COMPARE_WITH_TIMEOUT(player.GetStatus(), VlcStatus::Ended, Tests::Timeouts::Playback);
    }
};

QTEST_MAIN(VlcVideoWithoutXTest)
#include "tst_vlc_video_without_x.moc"
