#include "core/networking/pics_loader.h"

#include <QBitmap>
#include <QCoreApplication>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPainter>
#include <QPixmap>
#include <QUrl>

#include <algorithm>

namespace Core::Networking {

std::deque<PicsLoader::Task> PicsLoader::sTasks;
bool PicsLoader::sDownloadingNow = false;
QPointer<QNetworkAccessManager> PicsLoader::sNetworkAccessManager;

void PicsLoader::DisplayPic(const std::string& url, QPointer<QLabel> label, int radius)
{
    sTasks.push_back(Task{url, std::move(label), radius});
    if (!sDownloadingNow) {
        StartNextTask();
    }
}

void PicsLoader::RemoveTask(const std::string& url)
{
    sTasks.erase(
        std::remove_if(sTasks.begin(), sTasks.end(), [&url](const Task& task) { return task.url == url; }),
        sTasks.end());
}

QNetworkAccessManager* PicsLoader::NetworkAccessManager()
{
    // Owned by the application, so it goes away with it rather than after it.
    if (!sNetworkAccessManager) {
        sNetworkAccessManager = new QNetworkAccessManager(QCoreApplication::instance());
    }
    return sNetworkAccessManager;
}

void PicsLoader::StartNextTask()
{
    while (!sTasks.empty()) {
        Task task = std::move(sTasks.front());
        sTasks.pop_front();
        if (!task.label) {
            continue;
        }
        sDownloadingNow = true;
        QNetworkRequest request{QUrl(QString::fromStdString(task.url))};
        request.setTransferTimeout(TransferTimeoutMs);
        // Pictures often live behind a CDN address that redirects.
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                             QNetworkRequest::NoLessSafeRedirectPolicy);
        QNetworkReply* reply = NetworkAccessManager()->get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply,
                         [reply, task = std::move(task)] { TaskFinished(reply, task); });
        return;
    }
    sDownloadingNow = false;
}

void PicsLoader::TaskFinished(QNetworkReply* reply, const Task& task)
{
    reply->deleteLater();
    if (task.label && reply->error() == QNetworkReply::NoError) {
        ShowPicture(reply->readAll(), *task.label, task.radius);
    }
    StartNextTask();
}

void PicsLoader::ShowPicture(const QByteArray& bytes, QLabel& label, int radius)
{
    QPixmap picture;
    if (!picture.loadFromData(bytes) || picture.isNull()) {
        return;
    }
    QPixmap scaled = picture.scaled(label.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (scaled.isNull()) {
        return;
    }
    const qreal xRadius = radius == 0 ? label.width() / 2.0 : radius;
    const qreal yRadius = radius == 0 ? label.height() / 2.0 : radius;
    QBitmap mask(scaled.size());
    mask.clear();
    {
        QPainter painter(&mask);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::color1);
        painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(scaled.size())), xRadius, yRadius,
                                Qt::AbsoluteSize);
    }
    scaled.setMask(mask);
    label.setPixmap(scaled);
}

} // namespace Core::Networking
