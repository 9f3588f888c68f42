// Feeds arbitrary bytes to every JSON reader of the converter, as a reply body and,
// where the bytes parse, as the arrays and objects the list readers take. Whatever
// configuration comes out must survive being written and read back unchanged, and
// the written text must be what QJsonDocument makes of the same data; any
// difference aborts, so libFuzzer keeps the input.

#include "core/networking/json_converter.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

using Core::DataTypes::Playback::AllContentTypes;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::Networking::JsonConverter;

[[noreturn]] void Fail(const char* what, const QString& text)
{
    std::fprintf(stderr, "%s\n--- written text ---\n%s\n", what, text.toUtf8().constData());
    std::abort();
}

QByteArray QtDocument(const PlaybackConfiguration& c)
{
    QJsonArray content;
    for (const ContentType type : AllContentTypes()) {
        content.append(
            QJsonObject{{QStringLiteral("type"),
                         QString::fromStdString(Core::DataTypes::Playback::ContentTypeToString(type))},
                        {QStringLiteral("tracks"), JsonConverter::TracksToArray(c.tracks.at(type))}});
    }
    const QJsonObject inner{
        {QStringLiteral("version"), c.version},
        {QStringLiteral("domains"), JsonConverter::DomainsToArray(c.domains)},
        {QStringLiteral("schedule"), JsonConverter::DaysToArray(c.days)},
        {QStringLiteral("playlists"), JsonConverter::PlaylistsWithTracksToArray(c.playlists)},
        {QStringLiteral("ads"), JsonConverter::AdBlocksToArray(c.adBlocks)},
        {QStringLiteral("content"), content}};
    // The converter escapes U+FEFF, which Qt writes as it is.
    return QJsonDocument(QJsonObject{{QStringLiteral("configuration"), inner}})
        .toJson(QJsonDocument::Indented)
        .replace("\xEF\xBB\xBF", "\\ufeff");
}

void CheckRoundTrip(const PlaybackConfiguration& configuration)
{
    const QString text = JsonConverter::PlaybackConfigurationToString(configuration);
    if (*JsonConverter::PlaybackConfigurationFromResponse(text) != configuration) {
        Fail("reading the written configuration gave a different one", text);
    }
    if (text.toUtf8() != QtDocument(configuration)) {
        Fail("the written text differs from QJsonDocument's", text);
    }
}

void ReadArray(const QJsonArray& array)
{
    JsonConverter::DomainsFromArray(array);
    JsonConverter::DaysFromArray(array);
    JsonConverter::PlaybackPeriodsFromArray(array);
    JsonConverter::PlaylistsWithTracksFromArray(array);
    JsonConverter::AdBlocksFromArray(array);
    for (const ContentType type : AllContentTypes()) {
        JsonConverter::TracksFromArray(array, type);
    }
    JsonConverter::PlaylistsFromArray(array);
    JsonConverter::PlaylistTracksFromArray(array);
}

void ReadObject(const QJsonObject& object)
{
    JsonConverter::PlaybackObjectFromJsonObject(object);
    Core::Networking::ContentPlaylistSettingsFromJson(object);
}

// Settings written from what was read must read back to the same choice: the same
// mode and the ids that mode uses.
void CheckSettingsRoundTrip(const QString& body)
{
    const auto read = JsonConverter::PlaylistsSettingsFromResponse(body);
    const QJsonObject written = JsonConverter::PlaylistsSettingsToJson(*read);
    const auto again =
        JsonConverter::PlaylistsSettingsFromResponse(QString::fromUtf8(QJsonDocument(written).toJson()));
    for (const auto& [first, second] :
         {std::pair(&read->music, &again->music), std::pair(&read->video, &again->video),
          std::pair(&read->photo, &again->photo)}) {
        const bool same = first->advanced == second->advanced &&
                          (first->advanced ? first->morningPlaylistId == second->morningPlaylistId &&
                                                 first->dayPlaylistId == second->dayPlaylistId &&
                                                 first->eveningPlaylistId == second->eveningPlaylistId &&
                                                 first->nightPlaylistId == second->nightPlaylistId
                                           : first->playlistId == second->playlistId);
        if (!same) {
            Fail("playlist settings changed on the way back",
                 QString::fromUtf8(QJsonDocument(written).toJson()));
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QString body = QString::fromUtf8(bytes);

    JsonConverter::PlaybackConfigurationVersionFromResponse(body);
    JsonConverter::ServersFromResponse(body);
    JsonConverter::ConfirmationCodeFromResponse(body);
    JsonConverter::TokenFromResponse(body);
    JsonConverter::BusinessTypesFromResponse(body);
    JsonConverter::MusicStylesFromResponse(body);
    JsonConverter::PlaybackObjectFromResponse(body);
    JsonConverter::PlaybackObjectsFromResponse(body);
    JsonConverter::RecommendedPlaylistsFromResponse(body);
    JsonConverter::PlaylistsFromResponse(body);
    JsonConverter::TracksFromResponse(body);
    JsonConverter::CertificateUrlFromResponse(body);
    JsonConverter::LikeStatusFromResponse(body);
    JsonConverter::StringFromResponse(body, QStringLiteral("name"));
    JsonConverter::IntFromResponse(body, QStringLiteral("id"));
    JsonConverter::JsonObjectFromDataResponse(body, QStringLiteral("object"));
    JsonConverter::ArrayFromDataResponse(body, QStringLiteral("servers"));
    JsonConverter::DataObjectFromDataResponse(body);
    CheckSettingsRoundTrip(body);

    CheckRoundTrip(*JsonConverter::PlaybackConfigurationFromResponse(body));
    // The same bytes as the inside of a configuration reach the deep readers without
    // the fuzzer having to discover the wrapper first.
    CheckRoundTrip(*JsonConverter::PlaybackConfigurationFromResponse(QStringLiteral("{\"configuration\":") +
                                                                     body + QStringLiteral("}")));

    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (document.isArray()) {
        ReadArray(document.array());
    }
    const QJsonObject top = document.object();
    ReadObject(top);
    for (auto member = top.begin(); member != top.end(); ++member) {
        ReadArray(member.value().toArray());
        ReadObject(member.value().toObject());
    }
    return 0;
}
