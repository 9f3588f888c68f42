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

    QStringList PictureTargets()
    {
        QStringList targets;
        for (const QJsonValue& request : service->Requests()) {
            targets << request.toObject()
                           .value(QStringLiteral("target"))
                           .toString()
                           .remove(QStringLiteral("/files/pics/"));
        }
        return targets;
    }

    static int Alpha(const QPixmap& pixmap, int x, int y)
    {
        return pixmap.toImage().pixelColor(x, y).alpha();
    }

    // Holds the queue on a picture that answers late.
    void DelayFirst(const QString& name)
    {
        ServiceFault late(QStringLiteral("files/pics/") + name, QStringLiteral("delay"), 1);
        late.delayMs = 300;
        QVERIFY2(service->AddFault(late) > 0, qPrintable(service->ErrorString()));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(content.isValid());
        QVERIFY(QDir(content.path()).mkpath(QStringLiteral("pics")));
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

    void radiusZeroOnASquareLabelIsACircle()
    {
        QLabel label;
        label.resize(50, 50);
        PicsLoader::DisplayPic(Url(QStringLiteral("square.png")), &label, 0);
        QTRY_VERIFY_WITH_TIMEOUT(!label.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        const QPixmap shown = label.pixmap(Qt::ReturnByValue);
        QCOMPARE(shown.size(), QSize(50, 50));
        QCOMPARE(shown.toImage().pixelColor(25, 25), QColor(Qt::red));
        // Inside the circle at the middle of each edge, outside it at the corners.
        for (const QPoint& inside : {QPoint(25, 1), QPoint(1, 25), QPoint(48, 25), QPoint(25, 48)}) {
            QVERIFY2(Alpha(shown, inside.x(), inside.y()) == 255, qPrintable(QString::number(inside.x())));
        }
        for (const QPoint& outside :
             {QPoint(0, 0), QPoint(4, 4), QPoint(49, 0), QPoint(45, 45), QPoint(0, 49)}) {
            QVERIFY2(Alpha(shown, outside.x(), outside.y()) == 0, qPrintable(QString::number(outside.x())));
        }
    }

    void radiusRoundsOnlyTheCorners()
    {
        QLabel label;
        label.resize(100, 100);
        PicsLoader::DisplayPic(Url(QStringLiteral("wide.png")), &label, 10);
        QTRY_VERIFY_WITH_TIMEOUT(!label.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        const QPixmap shown = label.pixmap(Qt::ReturnByValue);
        // Scaled into the label keeping its shape.
        QCOMPARE(shown.size(), QSize(100, 50));
        QCOMPARE(Alpha(shown, 0, 0) + Alpha(shown, 99, 49), 0);
        QCOMPARE(Alpha(shown, 0, 25) & Alpha(shown, 50, 0) & Alpha(shown, 12, 12), 255);
    }

    // One at a time, in order; a gone label is skipped without a request, and a
    // failed picture never holds up the next.
    void queueGoesOnPastGoneLabelsAndFailures()
    {
        DelayFirst(QStringLiteral("missing.png"));
        QLabel missing;
        auto gone = std::make_unique<QLabel>();
        QLabel garbage;
        QLabel good;
        good.resize(20, 20);
        PicsLoader::DisplayPic(Url(QStringLiteral("missing.png")), &missing, 5);
        PicsLoader::DisplayPic(Url(QStringLiteral("wide.png")), gone.get(), 5);
        PicsLoader::DisplayPic(Url(QStringLiteral("garbage.png")), &garbage, 5);
        PicsLoader::DisplayPic(Url(QStringLiteral("square.png")), &good, 5);
        gone.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!good.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        QVERIFY(missing.pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(garbage.pixmap(Qt::ReturnByValue).isNull());
        QCOMPARE(PictureTargets(), (QStringList{"missing.png", "garbage.png", "square.png"}));
    }

    void removedTasksAreNotLoaded()
    {
        DelayFirst(QStringLiteral("square.png"));
        QLabel first;
        QLabel removed;
        QLabel last;
        first.resize(10, 10);
        last.resize(10, 10);
        PicsLoader::DisplayPic(Url(QStringLiteral("square.png")), &first, 0);
        PicsLoader::DisplayPic(Url(QStringLiteral("garbage.png")), &removed, 0);
        PicsLoader::DisplayPic(Url(QStringLiteral("wide.png")), &last, 0);
        PicsLoader::RemoveTask(Url(QStringLiteral("garbage.png")));
        QTRY_VERIFY_WITH_TIMEOUT(!last.pixmap(Qt::ReturnByValue).isNull(), Tests::Timeouts::Process);
        QVERIFY(!first.pixmap(Qt::ReturnByValue).isNull());
        QCOMPARE(PictureTargets(), (QStringList{"square.png", "wide.png"}));
    }
};

QTEST_MAIN(PicsLoaderTest)
#include "tst_pics_loader.moc"
