// The theme: both palettes, the stored choice across restarts, the change signals
// every open screen repaints on, and the fonts and icons the screens load from the
// resources.

#include "core/settings.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "ui/ui_kit/ui_kit.h"

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMetaProperty>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>

namespace {

const char* const ChildArgument = "--theme-child";

// WCAG's relative luminance and contrast ratio.
double Luminance(const QColor& color)
{
    auto channel = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
}

double Contrast(const QColor& a, const QColor& b)
{
    const double la = Luminance(a);
    const double lb = Luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QList<QMetaProperty> ThemeProperties(int userType)
{
    QList<QMetaProperty> properties;
    const QMetaObject* meta = &UI::UiKit::staticMetaObject;
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        if (meta->property(i).userType() == userType) {
            properties.append(meta->property(i));
        }
    }
    return properties;
}

// A process of its own stands for a start of the program: it may switch the theme
// ("switch"), then prints the palette it shows.
int RunChild(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    UI::UiKit& kit = UI::UiKit::GetInstance();
    if (argc > 2 && std::strcmp(argv[2], "switch") == 0) {
        kit.SwitchTheme();
    }
    QTextStream(stdout) << (kit.IsDarkTheme() ? "dark" : "light") << Qt::endl;
    return 0;
}

} // namespace

class TestUiKit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void themeIsStoredAndSurvivesARestart();
    void switchingTwiceRestoresThePaletteAndStoresIt();
    void everyPropertyAnnouncesASwitch();
    void palettesDifferAndTextIsLegible_data();
    void palettesDifferAndTextIsLegible();
    void fontsCoverCyrillic_data();
    void fontsCoverCyrillic();
    void iconsExistInBothPalettes();
    void sideBarIsWiderOnTheLargeScreen();

private:
    QString RunRestart(const QString& dataDirectory, const QString& action);
    QColor ColorOf(const char* property);

    std::unique_ptr<Tests::TestDataDirectory> mData;
};

void TestUiKit::initTestCase()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
}

QString TestUiKit::RunRestart(const QString& dataDirectory, const QString& action)
{
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZELMAR_DATA_DIR"), dataDirectory);
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(ChildArgument), action});
    if (!child.waitForFinished(Tests::Timeouts::Process) || child.exitCode() != 0) {
        return QStringLiteral("failed: ") + QString::fromLocal8Bit(child.readAllStandardError());
    }
    return QString::fromLatin1(child.readAllStandardOutput()).trimmed();
}

void TestUiKit::themeIsStoredAndSurvivesARestart()
{
    QTemporaryDir data;
    const QString settingsFile = data.filePath(QStringLiteral("settings.ini"));

    // A fresh installation shows the dark palette and writes that default down, so
    // the settings file always says which palette the screens show.
    QCOMPARE(RunRestart(data.path(), QStringLiteral("show")), QStringLiteral("dark"));
    QVERIFY(QFile::exists(settingsFile));
    const QStringList written = QSettings(settingsFile, QSettings::IniFormat).allKeys();
    QVERIFY2(!written.isEmpty(), "the default theme was not stored");

    // The owner's choice outlives the process.
    QCOMPARE(RunRestart(data.path(), QStringLiteral("switch")), QStringLiteral("light"));
    QCOMPARE(RunRestart(data.path(), QStringLiteral("show")), QStringLiteral("light"));
    QCOMPARE(RunRestart(data.path(), QStringLiteral("switch")), QStringLiteral("dark"));
    QCOMPARE(RunRestart(data.path(), QStringLiteral("show")), QStringLiteral("dark"));
}

void TestUiKit::switchingTwiceRestoresThePaletteAndStoresIt()
{
    UI::UiKit& kit = UI::UiKit::GetInstance();
    const bool first = kit.IsDarkTheme();
    const QColor firstBackground = kit.ScreenBackgroundColor();

    kit.SwitchTheme();
    QCOMPARE(kit.IsDarkTheme(), !first);
    QCOMPARE(Core::Settings::DarkTheme(), !first);
    QVERIFY(kit.ScreenBackgroundColor() != firstBackground);

    kit.SwitchTheme();
    QCOMPARE(kit.IsDarkTheme(), first);
    QCOMPARE(Core::Settings::DarkTheme(), first);
    QCOMPARE(kit.ScreenBackgroundColor(), firstBackground);

    kit.SetDarkTheme(!first);
    QCOMPARE(Core::Settings::DarkTheme(), !first);
    kit.SetDarkTheme(first);
}

void TestUiKit::everyPropertyAnnouncesASwitch()
{
    // A property whose change signal stays silent would keep its old palette on
    // every open screen after a switch.
    UI::UiKit& kit = UI::UiKit::GetInstance();
    const QMetaObject* meta = kit.metaObject();
    std::vector<std::unique_ptr<QSignalSpy>> spies;
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        QVERIFY2(property.hasNotifySignal(), property.name());
        spies.push_back(std::make_unique<QSignalSpy>(&kit, property.notifySignal()));
    }
    QVERIFY(spies.size() > 250);

    kit.SwitchTheme();
    kit.SwitchTheme();
    for (std::size_t i = 0; i < spies.size(); ++i) {
        QVERIFY2(spies[i]->count() == 2, meta->property(meta->propertyOffset() + static_cast<int>(i)).name());
    }
}

QColor TestUiKit::ColorOf(const char* property)
{
    const QVariant value = UI::UiKit::GetInstance().property(property);
    return value.value<QColor>();
}

void TestUiKit::palettesDifferAndTextIsLegible_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("background");
    QTest::addColumn<double>("minimum");

    // Text the owner reads from across the room: the body text ratio of 4.5; large
    // and secondary marks at least 3.
    QTest::newRow("body on screen") << QByteArray("TextPrimaryColor") << QByteArray("ScreenBackgroundColor")
                                    << 4.5;
    QTest::newRow("details on card") << QByteArray("TextSecondaryColor") << QByteArray("CardBackground")
                                     << 4.5;
    QTest::newRow("primary button") << QByteArray("PrimaryButtonTextColor")
                                    << QByteArray("PrimaryButtonBackground") << 4.5;
    QTest::newRow("danger button") << QByteArray("DangerButtonTextColor")
                                   << QByteArray("DangerButtonBackground") << 4.5;
    QTest::newRow("error under a form")
        << QByteArray("AuthMessageErrorColor") << QByteArray("ErrorSoftBackground") << 4.5;
    QTest::newRow("warning under a form")
        << QByteArray("AuthMessageWarningColor") << QByteArray("WarningSoftBackground") << 3.0;
    QTest::newRow("selected side bar item")
        << QByteArray("SideBarFontColorSelected") << QByteArray("SideBarItemBackgroundSelected") << 4.5;
    QTest::newRow("side bar item") << QByteArray("SideBarFontColor") << QByteArray("SideBarBackground")
                                   << 4.5;
    QTest::newRow("track title") << QByteArray("TrackInfoViewTrackTitleColor")
                                 << QByteArray("ScreenBackgroundColor") << 4.5;
    QTest::newRow("ad band") << QByteArray("AdBandTextColor") << QByteArray("AdBandBackground") << 4.5;
    QTest::newRow("active badge") << QByteArray("PlaylistViewActiveBadgeTextColor")
                                  << QByteArray("PlaylistViewActiveBadgeBackground") << 4.5;
    QTest::newRow("selected chip") << QByteArray("ChipTextColorSelected")
                                   << QByteArray("ChipBackgroundSelected") << 4.5;
    QTest::newRow("dialog text") << QByteArray("DialogTextColor") << QByteArray("DialogBackground") << 4.5;
    QTest::newRow("link on card") << QByteArray("LinkColor") << QByteArray("CardBackground") << 4.5;
    QTest::newRow("focus ring on screen")
        << QByteArray("FocusRingColor") << QByteArray("ScreenBackgroundColor") << 3.0;
}

void TestUiKit::palettesDifferAndTextIsLegible()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, background);
    QFETCH(double, minimum);

    UI::UiKit& kit = UI::UiKit::GetInstance();
    const bool first = kit.IsDarkTheme();
    QColor texts[2];
    QColor backgrounds[2];
    for (int dark = 0; dark < 2; ++dark) {
        kit.SetDarkTheme(dark == 1);
        texts[dark] = ColorOf(text.constData());
        backgrounds[dark] = ColorOf(background.constData());
        QVERIFY2(texts[dark].isValid() && backgrounds[dark].isValid(), text.constData());
        const double contrast = Contrast(texts[dark], backgrounds[dark]);
        QVERIFY2(contrast >= minimum,
                 qPrintable(QStringLiteral("%1 palette: %2 on %3 has contrast %4")
                                .arg(dark == 1 ? QStringLiteral("dark") : QStringLiteral("light"),
                                     QString::fromLatin1(text), QString::fromLatin1(background))
                                .arg(contrast, 0, 'f', 2)));
    }
    kit.SetDarkTheme(first);
    QVERIFY(backgrounds[0] != backgrounds[1] || texts[0] != texts[1]);
}

void TestUiKit::fontsCoverCyrillic_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QString>("file");
    QTest::newRow("display") << QByteArray("DisplayFont") << QStringLiteral("Roboto-Bold.ttf");
    QTest::newRow("body") << QByteArray("BodyFont") << QStringLiteral("OpenSans-Regular.ttf");
    QTest::newRow("body strong") << QByteArray("BodyStrongFont") << QStringLiteral("OpenSans-Semibold.ttf");
    QTest::newRow("mono") << QByteArray("MonoFont") << QStringLiteral("JetBrainsMono-Regular.ttf");
    QTest::newRow("mono strong") << QByteArray("MonoStrongFont") << QStringLiteral("JetBrainsMono-Bold.ttf");
}

void TestUiKit::fontsCoverCyrillic()
{
    QFETCH(QByteArray, property);
    QFETCH(QString, file);
    // The fonts come from the resources, not from whatever the machine has: a shop
    // computer without them must still show the same type.
    const QFont font = UI::UiKit::GetInstance().property(property.constData()).value<QFont>();
    const int id = QFontDatabase::addApplicationFont(QStringLiteral(":/ui_kit/fonts/") + file);
    QVERIFY2(id >= 0, qPrintable(file));
    QVERIFY(QFontDatabase::applicationFontFamilies(id).contains(font.family()));
    QVERIFY(QFontDatabase().writingSystems(font.family()).contains(QFontDatabase::Cyrillic));
    const QFontInfo resolved(font);
    QCOMPARE(resolved.family(), font.family());
}

void TestUiKit::iconsExistInBothPalettes()
{
    UI::UiKit& kit = UI::UiKit::GetInstance();
    const bool first = kit.IsDarkTheme();
    const QList<QMetaProperty> icons = ThemeProperties(QMetaType::QUrl);
    QVERIFY(icons.size() > 70);
    for (int dark = 0; dark < 2; ++dark) {
        kit.SetDarkTheme(dark == 1);
        for (const QMetaProperty& icon : icons) {
            const QUrl url = icon.read(&kit).toUrl();
            QCOMPARE(url.scheme(), QStringLiteral("qrc"));
            const QString resource = QLatin1Char(':') + url.path();
            QVERIFY2(QSvgRenderer(resource).isValid(),
                     qPrintable(QString::fromLatin1(icon.name()) + " " + resource));
        }
    }
    kit.SetDarkTheme(first);
    QVERIFY(QSvgRenderer(QStringLiteral(":/ui_kit/icons/logo.svg")).isValid());
}

void TestUiKit::sideBarIsWiderOnTheLargeScreen()
{
    UI::UiKit& kit = UI::UiKit::GetInstance();
    kit.SetDeviceType(UI::UiKit::Desktop);
    QVERIFY(!kit.IsSmartphone());
    const qreal desktop = kit.SideBarScreenWidthPercent();
    kit.SetDeviceType(UI::UiKit::LargeScreen);
    QVERIFY(kit.SideBarScreenWidthPercent() > desktop);
    kit.SetDeviceType(UI::UiKit::Smartphone);
    QVERIFY(kit.IsSmartphone());
    kit.SetDeviceType(UI::UiKit::Desktop);
}

int main(int argc, char* argv[])
{
    if (argc > 1 && std::strcmp(argv[1], ChildArgument) == 0) {
        return RunChild(argc, argv);
    }
    QGuiApplication application(argc, argv);
    TestUiKit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ui_kit.moc"
