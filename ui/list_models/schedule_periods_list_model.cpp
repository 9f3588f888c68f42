#include "ui/list_models/schedule_periods_list_model.h"

namespace UI::ListModels {

using Core::DataTypes::Playback::UserFacingSchedule;

namespace {

QVariant Summary(const UserFacingSchedule::PlaylistSummary& playlist, int part)
{
    switch (part) {
    case 0:
        return playlist.id;
    case 1:
        return QString::fromStdString(playlist.name);
    case 2:
        return QString::fromStdString(playlist.image);
    default:
        return playlist.trackCount;
    }
}

} // namespace

SchedulePeriodsListModel::SchedulePeriodsListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void SchedulePeriodsListModel::SetSchedules(const std::vector<UserFacingSchedule>& schedules)
{
    beginResetModel();
    mRows.clear();
    for (const UserFacingSchedule& schedule : schedules) {
        for (const auto& period : schedule.periods) {
            mRows.push_back({QString::fromStdString(schedule.name), period});
        }
    }
    endResetModel();
}

int SchedulePeriodsListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mRows.size());
}

QVariant SchedulePeriodsListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const Row& row = mRows[static_cast<std::size_t>(index.row())];
    const auto& period = row.period;
    switch (role) {
    case ScheduleNameRole:
        return row.scheduleName;
    case Qt::DisplayRole:
    case NameRole:
        return QString::fromStdString(period.name);
    case TimeIntervalRole:
        return QString::fromStdString(period.startTime) + QStringLiteral(" - ") +
               QString::fromStdString(period.endTime);
    case VolumeRole:
        return QStringLiteral("Музыки: %1\nРекламы: %2").arg(period.contentVolume).arg(period.adsVolume);
    case MusicIdRole:
    case MusicNameRole:
    case MusicCoverRole:
    case MusicTrackCountRole:
        return Summary(period.music, role - MusicIdRole);
    case VideoIdRole:
    case VideoNameRole:
    case VideoCoverRole:
    case VideoTrackCountRole:
        return Summary(period.video, role - VideoIdRole);
    case PhotoIdRole:
    case PhotoNameRole:
    case PhotoCoverRole:
    case PhotoTrackCountRole:
        return Summary(period.photo, role - PhotoIdRole);
    default:
        return {};
    }
}

QHash<int, QByteArray> SchedulePeriodsListModel::roleNames() const
{
    return {
        {ScheduleNameRole, "scheduleName"},      {NameRole, "name"},
        {TimeIntervalRole, "timeInterval"},      {VolumeRole, "volume"},
        {MusicIdRole, "musicPlaylistsId"},       {MusicNameRole, "musicPlaylistName"},
        {MusicCoverRole, "musicPlaylistsCover"}, {MusicTrackCountRole, "musicPlaylisttrackCount"},
        {VideoIdRole, "videoPlaylistsId"},       {VideoNameRole, "videoPlaylistName"},
        {VideoCoverRole, "videoPlaylistsCover"}, {VideoTrackCountRole, "videoPlaylisttrackCount"},
        {PhotoIdRole, "photoPlaylistsId"},       {PhotoNameRole, "photoPlaylistName"},
        {PhotoCoverRole, "photoPlaylistsCover"}, {PhotoTrackCountRole, "photoPlaylisttrackCount"},
    };
}

} // namespace UI::ListModels
