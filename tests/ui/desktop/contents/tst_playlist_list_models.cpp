// The list models behind the content section, under Qt's own model checker: the
// catalogue's cards as the search narrows and widens them, and a playlist's tracks.

#include "ui/list_models/playlists_list_model.h"
#include "ui/list_models/tracks_list_model.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using Core::DataTypes::Playlists::Playlist;
using Core::DataTypes::Playlists::PlaylistContentType;
using UI::PlaylistsListModel;

namespace {

PlaylistsListModel::Entry Entry(PlaylistContentType type, int id, const char* name, bool active = false)
{
    PlaylistsListModel::Entry entry;
    entry.type = type;
    entry.playlist.id = id;
    entry.playlist.name = name;
    entry.playlist.active = active;
    return entry;
}

QStringList Names(const QAbstractItemModel& model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row) {
        names.append(model.index(row, 0).data(PlaylistsListModel::NameRole).toString());
    }
    return names;
}

} // namespace

class PlaylistListModelsTest : public QObject
{
    Q_OBJECT

private slots:
    void theSearchNarrowsAndWidens()
    {
        PlaylistsListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        // The same id in two catalogues is two playlists.
        model.SetPlaylists({Entry(PlaylistContentType::StockMusic, 1, "Утренний джаз", true),
                            Entry(PlaylistContentType::Music, 1, "Своя музыка"),
                            Entry(PlaylistContentType::StockMusic, 7, "Вечерний ДЖАЗ")});
        QCOMPARE(Names(model), (QStringList{"Утренний джаз", "Своя музыка", "Вечерний ДЖАЗ"}));

        model.SetFilter(QStringLiteral(" джаз "));
        QCOMPARE(Names(model), (QStringList{"Утренний джаз", "Вечерний ДЖАЗ"}));
        // Rows are counted in what is shown: the second row is the evening one now.
        QCOMPARE(model.EntryAt(1)->playlist.id, 7);
        QCOMPARE(model.RowOf(PlaylistContentType::StockMusic, 7), 1);
        QCOMPARE(model.RowOf(PlaylistContentType::Music, 1), -1);
        QVERIFY(model.EntryAt(2) == nullptr);
        QVERIFY(model.index(0, 0).data(PlaylistsListModel::ActiveRole).toBool());

        // New answers from the server keep the search.
        model.SetPlaylists({Entry(PlaylistContentType::Music, 2, "Джаз на обед")});
        QCOMPARE(Names(model), QStringList{"Джаз на обед"});
        model.SetFilter(QString());
        QCOMPARE(model.rowCount(), 1);
    }

    void sizesReadAsAPersonWouldSayThem_data()
    {
        QTest::addColumn<double>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("unknown") << 0.0 << "";
        QTest::newRow("bytes") << 512.0 << "512 Б";
        QTest::newRow("a fraction") << 1500000000.5 << "1,4 ГБ";
        // Past 2 GiB, which an integer of 32 bits would not hold.
        QTest::newRow("tens") << 12.0 * 1024 * 1024 * 1024 << "12 ГБ";
    }

    void sizesReadAsAPersonWouldSayThem()
    {
        QFETCH(double, bytes);
        QFETCH(QString, text);
        QCOMPARE(PlaylistsListModel::SizeText(bytes), text);
    }

    void tracks()
    {
        UI::TracksListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        auto tracks = std::make_shared<std::vector<Core::DataTypes::Playlists::Track>>();
        tracks->push_back({1001, "Первая", "Квартет", ""});
        tracks->push_back({1002, "", "", ""});
        model.SetTracks(tracks);
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.index(0, 0).data(UI::TracksListModel::AuthorRole).toString(),
                 QStringLiteral("Квартет"));
        // An unnamed track still has a line to read.
        QCOMPARE(model.index(1, 0).data(UI::TracksListModel::NameRole).toString(),
                 QStringLiteral("Без названия"));
        model.Clear();
        QCOMPARE(model.rowCount(), 0);
    }
};

QTEST_MAIN(PlaylistListModelsTest)
#include "tst_playlist_list_models.moc"
