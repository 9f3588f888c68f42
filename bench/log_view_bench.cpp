// Opening a shop's event log of 50 MB in the log view: the longest time the window's
// event loop stands still while AppLogModel takes the file in, against the time the
// same file takes to read on the window's own thread (what a blocking read would
// freeze it for). Goal: the window keeps turning, its longest stall at most a
// tenth of the blocking read.
//
//   log_view_bench [MEGABYTES]      (50 by default)

#include "ui/list_models/app_log_model.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr double GoalRatio = 0.1;

bool WriteLog(const QString& path, int megabytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    // What a day of playing writes: stamped entries with an indented detail line.
    const QByteArray entry = QByteArrayLiteral("[24.11.2026 10:15:00] Начато воспроизведение трека:\n"
                                               "\tУтренний бриз — Ансамбль Полдень\n\n");
    QByteArray block;
    while (block.size() < 1024 * 1024) {
        block += entry;
    }
    for (int megabyte = 0; megabyte < megabytes; ++megabyte) {
        if (file.write(block) != block.size()) {
            return false;
        }
    }
    return true;
}

// The file read and split on this thread, as a view reading it itself would.
qint64 BlockingReadMs(const QString& path, int* lines)
{
    QElapsedTimer timer;
    timer.start();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return -1;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    *lines = stream.readAll().split(QLatin1Char('\n')).size();
    return timer.elapsed();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const int megabytes = argc > 1 ? std::atoi(argv[1]) : 50;
    if (argc > 2 || megabytes <= 0) {
        std::fprintf(stderr, "usage: %s [MEGABYTES]\n", argv[0]);
        return 2;
    }
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the figures mean little\n");
#endif
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("zelmar.log"));
    if (!folder.isValid() || !WriteLog(path, megabytes)) {
        std::fprintf(stderr, "error: cannot write a %d MB log in %s\n", megabytes, qPrintable(folder.path()));
        return 1;
    }

    int lines = 0;
    const qint64 blockingMs = BlockingReadMs(path, &lines);
    if (blockingMs < 0) {
        std::fprintf(stderr, "error: cannot read %s back\n", qPrintable(path));
        return 1;
    }

    UI::ListModels::AppLogModel model;
    QElapsedTimer sinceLastTurn;
    QElapsedTimer total;
    qint64 longestStallMs = 0;
    int turns = 0;
    QTimer turn;
    turn.setInterval(0);
    QObject::connect(&turn, &QTimer::timeout, [&]() {
        longestStallMs = std::max(longestStallMs, sinceLastTurn.restart());
        ++turns;
    });
    QObject::connect(&model, &UI::ListModels::AppLogModel::loaded, [&]() {
        // The last stretch, taking the lines in, counts as a stall too.
        longestStallMs = std::max(longestStallMs, sinceLastTurn.elapsed());
        QCoreApplication::quit();
    });
    total.start();
    sinceLastTurn.start();
    turn.start();
    model.LoadFile(path);
    QCoreApplication::exec();
    const qint64 totalMs = total.elapsed();

    const double ratio =
        static_cast<double>(longestStallMs) / static_cast<double>(std::max<qint64>(blockingMs, 1));
    std::printf("event log of %d MB, %d lines (%d in the model)\n", megabytes, lines, model.TotalLineCount());
    std::printf("read on the window's thread:        %6lld ms (the baseline: the window frozen that long)\n",
                static_cast<long long>(blockingMs));
    std::printf("AppLogModel::LoadFile, until shown: %6lld ms, the event loop turning %d times\n",
                static_cast<long long>(totalMs), turns);
    std::printf("longest stall of the event loop:    %6lld ms\n", static_cast<long long>(longestStallMs));
    std::printf("stall / blocking read: %.3f (goal <= %.2f: %s)\n", ratio, GoalRatio,
                ratio <= GoalRatio ? "met" : "NOT met");
    return 0;
}
