#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>
#include <QVector>

namespace UI::ListModels {

// The event log, one row per line of the file in the file's order, so the newest
// entries are the last rows. A search text keeps only the lines that contain it
// (ignoring case); the empty text shows every line.
//
// A shop's log is never trimmed and reaches tens of megabytes. LoadFile() reads
// and splits it on a thread of its own and hands the finished lines over in one
// step, so the window keeps drawing and taking input while a large log is read;
// the rows change only when the whole file is in.
class AppLogModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(bool loading READ IsLoading NOTIFY loadingChanged)

public:
    enum Role
    {
        LineRole = Qt::UserRole + 1,
    };

    explicit AppLogModel(QObject* parent = nullptr);
    // Waits for a file still being read: the reading thread must not outlive the
    // model it reports to.
    ~AppLogModel() override;

    // The text split at "\n", empty lines kept; with `replaceTabs` every tab becomes
    // a blank first.
    Q_INVOKABLE void loadAppLog(const QString& text, bool replaceTabs);
    // Reads the file (UTF-8) in the background; `loaded` follows. A missing or
    // unreadable file shows no rows. A second call before the first has finished
    // wins: the earlier result is dropped.
    void LoadFile(const QString& path);
    bool IsLoading() const;

    Q_INVOKABLE void setFilterText(const QString& text);
    QString FilterText() const;
    // Every line of the log, whatever the filter shows.
    int TotalLineCount() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void loadingChanged();
    // The rows now hold the file asked for last.
    void loaded();

private:
    void SetLines(QStringList lines);
    void ApplyFilter();
    void SetLoading(bool loading);

    QStringList mLines;
    // Rows of mLines that the filter shows; unused while the filter is empty.
    QVector<int> mShown;
    QString mFilter;
    bool mLoading = false;
    // Names the latest LoadFile(), so an earlier read that ends later is dropped.
    int mGeneration = 0;
};

} // namespace UI::ListModels
