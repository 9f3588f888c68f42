#include <QGuiApplication>
#include <QWidget>
#include <QtTest>

// Video output attaches to a real X window; the virtual display must give the
// tests such windows.
class DisplayFixtureTest : public QObject
{
    Q_OBJECT

private slots:
    void nativeWindowsAreExposedOnTheVirtualDisplay()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        QWidget window;
        window.setAttribute(Qt::WA_NativeWindow);
        window.resize(320, 240);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(window.winId() != 0);

        QWidget videoArea(&window);
        videoArea.setAttribute(Qt::WA_NativeWindow);
        videoArea.setGeometry(10, 10, 160, 120);
        videoArea.show();
        QVERIFY(QTest::qWaitForWindowExposed(&videoArea));
        QVERIFY2(videoArea.winId() != window.winId(), "a child video area needs an X window of its own");
    }
};

QTEST_MAIN(DisplayFixtureTest)
#include "tst_display_fixture.moc"
