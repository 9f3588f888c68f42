#include "ui/desktop/pending_request.h"

#include <utility>

namespace UI::Desktop {

int PendingRequest::sNoAnswerMs = PendingRequest::NoAnswerMs;

PendingRequest::PendingRequest(BusyHandler showBusy, std::function<void()> onNoAnswer, QObject* parent)
    : QObject(parent)
    , mShowBusy(std::move(showBusy))
    , mOnNoAnswer(std::move(onNoAnswer))
{
    mBusyTimer.setSingleShot(true);
    mNoAnswerTimer.setSingleShot(true);
    connect(&mBusyTimer, &QTimer::timeout, this, [this]() {
        mBusyShown = true;
        if (mShowBusy) {
            mShowBusy(true);
        }
    });
    connect(&mNoAnswerTimer, &QTimer::timeout, this, [this]() {
        Stop();
        // The ticket moves on, so the late answer finds itself stale.
        ++mTicket;
        if (mOnNoAnswer) {
            mOnNoAnswer();
        }
    });
}

PendingRequest::~PendingRequest() = default;

bool PendingRequest::IsRunning() const
{
    return mRunning;
}

int PendingRequest::Start()
{
    mRunning = true;
    mBusyTimer.start(BusyDelayMs);
    mNoAnswerTimer.start(sNoAnswerMs);
    return ++mTicket;
}

bool PendingRequest::Finish(int ticket)
{
    if (!mRunning || ticket != mTicket) {
        return false;
    }
    Stop();
    return true;
}

void PendingRequest::Stop()
{
    mRunning = false;
    mBusyTimer.stop();
    mNoAnswerTimer.stop();
    if (mBusyShown) {
        mBusyShown = false;
        if (mShowBusy) {
            mShowBusy(false);
        }
    }
}

void PendingRequest::SetNoAnswerDelayForTesting(int milliseconds)
{
    sNoAnswerMs = milliseconds;
}

void PendingRequest::ResetNoAnswerDelayForTesting()
{
    sNoAnswerMs = NoAnswerMs;
}

} // namespace UI::Desktop
