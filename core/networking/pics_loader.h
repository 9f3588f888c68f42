#pragma once

#include <QPointer>

#include <deque>
#include <string>

class QByteArray;
class QLabel;
class QNetworkAccessManager;
class QNetworkReply;

namespace Core::Networking {

// Loads covers, icons and logos into labels, one picture at a time in the order
// asked, and rounds their corners. A label that is gone by the time its turn
// comes is skipped; a picture that fails to load leaves its label as it was and
// never holds up the ones behind it. GUI thread only.
class PicsLoader
{
public:
    PicsLoader() = delete;

    // `radius` 0 makes an ellipse of the label's size: a circle on a square label.
    static void DisplayPic(const std::string& url, QPointer<QLabel> label, int radius);
    // Forgets the queued pictures of this URL; one already loading still arrives.
    static void RemoveTask(const std::string& url);

    // A picture that sends nothing for this long is given up.
    static constexpr int TransferTimeoutMs = 30000;

private:
    struct Task
    {
        std::string url;
        QPointer<QLabel> label;
        int radius = 0;
    };

    static QNetworkAccessManager* NetworkAccessManager();
    static void StartNextTask();
    static void TaskFinished(QNetworkReply* reply, const Task& task);
    static void ShowPicture(const QByteArray& bytes, QLabel& label, int radius);

    static std::deque<Task> sTasks;
    static bool sDownloadingNow;
    static QPointer<QNetworkAccessManager> sNetworkAccessManager;
};

} // namespace Core::Networking
