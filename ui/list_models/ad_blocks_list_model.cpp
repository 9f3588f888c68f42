#include "ui/list_models/ad_blocks_list_model.h"

#include "core/utilities/local_time_helper.h"

#include <algorithm>

namespace UI::ListModels {

using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Core::Utilities::LocalTimeHelper;

AdBlocksListModel::AdBlocksListModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

void AdBlocksListModel::SetBlocks(const Core::DataTypes::Playback::PlaybackConfiguration& configuration,
                                  const std::string& periodStart, const std::string& periodEnd,
                                  const std::string& date, int nowSeconds, const DownloadedCheck& downloaded)
{
    const int from = LocalTimeHelper::StartTimeToSecondsFromDayStart(periodStart);
    const int to = LocalTimeHelper::EndTimeToSecondsFromDayStart(periodEnd);
    const auto clips = configuration.tracks.find(ContentType::Clip);
    auto clipById = [&](std::int32_t id) -> const Track* {
        if (clips == configuration.tracks.end()) {
            return nullptr;
        }
        const auto found = std::find_if(clips->second.begin(), clips->second.end(),
                                        [id](const Track& track) { return track.id == id; });
        return found != clips->second.end() ? &*found : nullptr;
    };

    std::vector<Row> rows;
    for (const auto& block : configuration.adBlocks) {
        const int start = LocalTimeHelper::StartTimeToSecondsFromDayStart(block.startTime);
        if (start < from || start >= to) {
            continue;
        }
        Row row;
        row.startSeconds = start;
        row.time = QString::fromStdString(block.startTime);
        row.name = QString::fromStdString(block.name);
        row.interrupts = block.interruptContent;
        row.played = start < nowSeconds;
        for (const auto& entry : block.tracks) {
            if (entry.date != date) {
                continue;
            }
            const Track* spot = clipById(entry.trackId);
            // A spot the configuration does not describe cannot play; it is still
            // listed, so the owner sees the block is not complete.
            row.spots.append(spot != nullptr ? QString::fromStdString(spot->name)
                                             : QStringLiteral("Ролик %1").arg(entry.trackId));
            if (spot != nullptr && downloaded && downloaded(*spot)) {
                ++row.downloaded;
            }
        }
        if (!row.spots.isEmpty()) {
            rows.push_back(row);
        }
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& a, const Row& b) { return a.startSeconds < b.startSeconds; });
    const auto sameBlock = [](const Row& a, const Row& b) {
        return a.startSeconds == b.startSeconds && a.name == b.name && a.spots == b.spots;
    };
    if (rows.size() != mRows.size() || !std::equal(rows.begin(), rows.end(), mRows.begin(), sameBlock)) {
        beginResetModel();
        mRows = std::move(rows);
        endResetModel();
        return;
    }
    // The same blocks as before, looked at again: only downloads and the clock have
    // moved on, and a view scrolled by the owner stays where it is.
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Row& row = mRows[i];
        if (row.downloaded != rows[i].downloaded || row.played != rows[i].played ||
            row.interrupts != rows[i].interrupts || row.time != rows[i].time) {
            row = rows[i];
            const QModelIndex changed = index(static_cast<int>(i));
            emit dataChanged(changed, changed);
        }
    }
}

int AdBlocksListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(mRows.size());
}

QVariant AdBlocksListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    const Row& row = mRows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TimeRole:
        return row.time;
    case NameRole:
        return row.name;
    case InterruptsRole:
        return row.interrupts;
    case SpotsRole:
        return row.spots;
    case DownloadedCountRole:
        return row.downloaded;
    case SpotCountRole:
        return row.spots.size();
    case PlayedRole:
        return row.played;
    default:
        return {};
    }
}

QHash<int, QByteArray> AdBlocksListModel::roleNames() const
{
    return {{TimeRole, "time"},
            {NameRole, "name"},
            {InterruptsRole, "interrupts"},
            {SpotsRole, "spots"},
            {DownloadedCountRole, "downloadedCount"},
            {SpotCountRole, "spotCount"},
            {PlayedRole, "played"}};
}

} // namespace UI::ListModels
