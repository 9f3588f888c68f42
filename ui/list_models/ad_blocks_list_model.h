#pragma once

#include "core/data_types/playback/playback_configuration.h"

#include <QAbstractListModel>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace UI::ListModels {

// The advertising blocks of the period playing now, in time order: when each starts,
// whether it interrupts the music, its spots and which of them are downloaded, and
// whether it has already played today.
class AdBlocksListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role
    {
        TimeRole = Qt::UserRole + 1,
        NameRole,
        InterruptsRole,
        SpotsRole,
        DownloadedCountRole,
        SpotCountRole,
        PlayedRole,
    };

    using DownloadedCheck = std::function<bool(const Core::DataTypes::Playback::Track&)>;

    explicit AdBlocksListModel(QObject* parent = nullptr);

    // Blocks of `date` ("dd.MM.yyyy") that start within [periodStart, periodEnd)
    // ("HH:MM"); those that start before `nowSeconds` (from local midnight) have
    // played.
    void SetBlocks(const Core::DataTypes::Playback::PlaybackConfiguration& configuration,
                   const std::string& periodStart, const std::string& periodEnd, const std::string& date,
                   int nowSeconds, const DownloadedCheck& downloaded);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        int startSeconds = 0;
        QString time;
        QString name;
        bool interrupts = false;
        QStringList spots;
        int downloaded = 0;
        bool played = false;
    };

    std::vector<Row> mRows;
};

} // namespace UI::ListModels
