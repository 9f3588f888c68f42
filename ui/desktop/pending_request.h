#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace UI::Desktop {

// The one request a screen is waiting for. It shows the busy state only once the
// request has taken longer than a glance (a quick answer never flickers), and gives
// up when the server keeps silent: the sign-in family of requests has no transfer
// timeout of its own, and a person must never be left with a busy button for good.
// An answer that arrives after the screen gave up is recognised by its ticket and
// ignored.
class PendingRequest : public QObject
{
    Q_OBJECT

public:
    using BusyHandler = std::function<void(bool busy)>;

    static constexpr int BusyDelayMs = 300;
    static constexpr int NoAnswerMs = 30000;

    PendingRequest(BusyHandler showBusy, std::function<void()> onNoAnswer, QObject* parent = nullptr);
    ~PendingRequest() override;

    bool IsRunning() const;
    // Starts waiting; the ticket names this request's answer.
    int Start();
    // True when `ticket` is the request still awaited, which is over now; false for an
    // answer the screen has stopped waiting for.
    bool Finish(int ticket);

    // Test seam: how long the screens wait for an answer before they say the server
    // does not answer.
    static void SetNoAnswerDelayForTesting(int milliseconds);
    static void ResetNoAnswerDelayForTesting();

private:
    void Stop();

    static int sNoAnswerMs;

    BusyHandler mShowBusy;
    std::function<void()> mOnNoAnswer;
    QTimer mBusyTimer;
    QTimer mNoAnswerTimer;
    int mTicket = 0;
    bool mRunning = false;
    bool mBusyShown = false;
};

} // namespace UI::Desktop
