// Every QML document of the resources loads, renders and survives a theme switch in
// both palettes without a single QML warning: a misspelt theme property, a binding
// to something a screen has not set yet, or a shader the software renderer cannot
// draw all show up here before a shop owner sees a blank screen.

#include "tests/support/test_data_directory.h"
#include "tests/ui/support/qml_warnings.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/ui_kit/ui_kit.h"
#include "ui/ui_kit/ui_resources.h"

#include <QApplication>
#include <QDirIterator>
#include <QtTest>

#include <memory>

class TestQmlDocuments : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void loadsInBothThemes_data();
    void loadsInBothThemes();

private:
    std::unique_ptr<Tests::TestDataDirectory> mData;
};

void TestQmlDocuments::initTestCase()
{
    mData = std::make_unique<Tests::TestDataDirectory>();
    QVERIFY(mData->IsValid());
    Tests::QmlWarnings::StartRecording();
}

void TestQmlDocuments::loadsInBothThemes_data()
{
    QTest::addColumn<QUrl>("document");
    UI::UiResources::Initialize();
    QStringList documents;
    QDirIterator it(QStringLiteral(":/ui_kit/screens"), {QStringLiteral("*.qml")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        documents.append(it.next());
    }
    documents.sort();
    QVERIFY2(documents.size() >= 10, "the screens' documents are missing from the resources");
    for (const QString& path : documents) {
        QTest::newRow(qPrintable(path.mid(QStringLiteral(":/ui_kit/screens/").size())))
            << QUrl(QStringLiteral("qrc") + path);
    }
}

void TestQmlDocuments::loadsInBothThemes()
{
    QFETCH(QUrl, document);
    UI::UiKit& kit = UI::UiKit::GetInstance();
    kit.SetDeviceType(UI::UiKit::Desktop);
    Tests::QmlWarnings::Take();

    for (const bool dark : {true, false}) {
        kit.SetDarkTheme(dark);
        UI::Desktop::BaseWidgetDesktop screen;
        screen.resize(1024, 708);
        screen.SetSource(document);
        QCOMPARE(screen.status(), QQuickWidget::Ready);
        screen.show();
        // Drawing the document evaluates what only a frame needs (sizes, images).
        QVERIFY(!screen.grabFramebuffer().isNull());
        // The other palette while it is open, as a switch in the side bar does.
        kit.SwitchTheme();
        QVERIFY(!screen.grabFramebuffer().isNull());
        const QStringList found = Tests::QmlWarnings::Take();
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
    }
}

QTEST_MAIN(TestQmlDocuments)
#include "tst_qml_documents.moc"
