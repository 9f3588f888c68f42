#include "core/networking/pics_loader.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_timeouts.h"

#include <QImage>
#include <QLabel>
#include <QPixmap>

#include <memory>
#include <tuple>

using Core::Networking::PicsLoader;
using Tests::ServiceFault;

// Pictures from the reference service's file area into real labels.
class PicsLoaderTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;

    std::string Url(const QString& name) const
    {
        return (service->Origin() + QStringLiteral("files/pics/") + name).toStdString();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid() && QDir(content.path()).mkpath(QStringLiteral("pics")));
        for (const auto& [name, size, color] : {std::tuple{"square", QSize(100, 100), Qt::red},
                                                std::tuple{"wide", QSize(200, 100), Qt::blue}}) {
            QImage picture(size, QImage::Format_RGB32);
            picture.fill(color);
            QVERIFY(picture.save(content.filePath(QStringLiteral("pics/%1.png").arg(name))));
        }
        QFile garbage(content.filePath(QStringLiteral("pics/garbage.png")));
        QVERIFY(garbage.open(QIODevice::WriteOnly) && garbage.write("this is not a picture") > 0);

        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error, content.path());
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    // Radius zero makes a circle; otherwise scaled keeping its shape, only corners rounded.
    void picturesAreScaledAndRounded()
    {
        QLabel circle, rounded;
        circle.resize(50, 50);
        rounded.resize(100, 100);
        PicsLoader::DisplayPic(Url("square.png"), &circle, 0);
        PicsLoader::DisplayPic(Url("wide.png"), &rounded, 10);
        QTRY_VERIFY_WITH_TIMEOUT(!rounded.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        const QImage shown = circle.pixmap(Qt::ReturnByValue).toImage();
        QCOMPARE(shown.size(), QSize(50, 50));
        QCOMPARE(shown.pixelColor(25, 25), QColor(Qt::red));
        for (const QPoint& inside : {QPoint(25, 1), QPoint(1, 25), QPoint(48, 25), QPoint(25, 48)}) {
            QVERIFY2(shown.pixelColor(inside).alpha() == 255, qPrintable(QString::number(inside.x())));
        }
        for (const QPoint& outside :
             {QPoint(0, 0), QPoint(4, 4), QPoint(49, 0), QPoint(45, 45), QPoint(0, 49)}) {
            QVERIFY2(shown.pixelColor(outside).alpha() == 0, qPrintable(QString::number(outside.x())));
        }
        const QImage wide = rounded.pixmap(Qt::ReturnByValue).toImage();
        QCOMPARE(wide.size(), QSize(100, 50));
        QVERIFY(wide.pixelColor(0, 0).alpha() == 0 && wide.pixelColor(12, 12).alpha() == 255);
    }

    // In order; gone labels and removed tasks go unasked, failures hold up nothing.
    void queueGoesOnPastGoneLabelsRemovedTasksAndFailures()
    {
        ServiceFault late(QStringLiteral("files/pics/missing.png"), QStringLiteral("delay"), 1);
        late.delayMs = 300;
        QVERIFY2(service->AddFault(late) > 0, qPrintable(service->ErrorString()));
        QLabel missing, removed, garbage, good;
        auto gone = std::make_unique<QLabel>();
        good.resize(20, 20);
        PicsLoader::DisplayPic(Url("missing.png"), &missing, 5);
        PicsLoader::DisplayPic(Url("wide.png"), gone.get(), 5);
        PicsLoader::DisplayPic(Url("wide.png?removed"), &removed, 5);
        PicsLoader::DisplayPic(Url("garbage.png"), &garbage, 5);
        PicsLoader::DisplayPic(Url("square.png"), &good, 5);
        gone.reset();
        PicsLoader::RemoveTask(Url("wide.png?removed"));
        QTRY_VERIFY_WITH_TIMEOUT(!good.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        QVERIFY(missing.pixmap(Qt::ReturnByValue).isNull() && garbage.pixmap(Qt::ReturnByValue).isNull());
        QStringList targets;
        for (const QJsonValue& request : service->Requests()) {
            targets << request.toObject().value("target").toString().remove(QStringLiteral("/files/pics/"));
        }
        QCOMPARE(targets, (QStringList{"missing.png", "garbage.png", "square.png"}));
    }
};

QTEST_MAIN(PicsLoaderTest)
#include "tst_pics_loader.moc"
