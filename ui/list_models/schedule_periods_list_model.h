#pragma once

#include "core/data_types/playback/user_facing_schedule.h"

#include <QAbstractListModel>

#include <vector>

namespace UI::ListModels {

// The week's schedules as one list of periods, each row knowing its schedule's name
// so that the view groups them. The role names are the keys the schedule document
// reads ("musicPlaylisttrackCount" and its kin are spelt as the view expects).
class SchedulePeriodsListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        ScheduleNameRole = Qt::UserRole + 1,
        NameRole,
        TimeIntervalRole,
        VolumeRole,
        MusicIdRole,
        MusicNameRole,
        MusicCoverRole,
        MusicTrackCountRole,
        VideoIdRole,
        VideoNameRole,
        VideoCoverRole,
        VideoTrackCountRole,
        PhotoIdRole,
        PhotoNameRole,
        PhotoCoverRole,
        PhotoTrackCountRole,
    };

    explicit SchedulePeriodsListModel(QObject* parent = nullptr);

    void SetSchedules(const std::vector<Core::DataTypes::Playback::UserFacingSchedule>& schedules);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        QString scheduleName;
        Core::DataTypes::Playback::UserFacingSchedule::PlaybackPeriodInfo period;
    };

    std::vector<Row> mRows;
};

} // namespace UI::ListModels
