#pragma once

#include "core/networking/server_connection.h"
#include "core/statistics/report.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Core::Statistics {

// Delivers playback reports to the server. A fresh report goes out at once when
// the server can be reached and waits in the database otherwise; stored reports
// go out in runs of batches of 1000, duplicates (the same start recorded twice
// within a minute) removed first. A batch leaves the database only after the
// server has acknowledged it, so a failure at any point loses nothing: the next
// run, started by the next successful live report or the next start, sends again.
//
// Only one run exists at a time. Everything runs on the GUI thread; the state is
// process-wide and there is no instance.
//
// The connection is held weakly while requests are in flight: a connection that
// goes away (signing out) ends the run instead of being used after its end.
class Manager
{
public:
    Manager() = delete;

    static constexpr std::size_t BatchLimit = 1000;

    static void TryToSendReport(const std::shared_ptr<Networking::ServerConnection>& connection,
                                const Report& report);
    static void SendReport(const std::shared_ptr<Networking::ServerConnection>& connection,
                           const Report& report);
    static void SaveReport(const Report& report);
    static void TryToSendStoredReports(const std::shared_ptr<Networking::ServerConnection>& connection);
    static void SendStoredReports(const std::shared_ptr<Networking::ServerConnection>& connection);

    static bool IsSendingInProgress();

private:
    static void FinishRun();

    static bool sIsSendingInProgress;
    static std::vector<Report> sPendingReports;
    static std::vector<Report> sSendingReports;
    // The connection of the run in progress. A run whose connection is gone can
    // never finish (its answers are dropped with it), so a new run may replace it.
    static std::weak_ptr<Networking::ServerConnection> sRunConnection;
    // Answers that arrive for a run that has been replaced change nothing but the
    // rows they acknowledge.
    static std::uint64_t sRunNumber;
};

} // namespace Core::Statistics
