#include "core/networking/json_converter.h"

#include <QJsonDocument>
#include <QJsonValue>
#include <QLatin1String>

#include <charconv>
#include <iterator>
#include <limits>
#include <new>

namespace Core::Networking {

namespace {

using DataTypes::Playback::AdBlock;
using DataTypes::Playback::AllContentTypes;
using DataTypes::Playback::ContentType;
using DataTypes::Playback::Day;
using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::PlaybackConfiguration;
using DataTypes::Playback::PlaybackPeriod;
using DataTypes::Playback::Track;
using PlaybackPlaylist = DataTypes::Playback::Playlist;
using CataloguePlaylist = DataTypes::Playlists::Playlist;
using CatalogueTrack = DataTypes::Playlists::Track;
using DataTypes::Playlists::ContentPlaylistSettings;

// Keys are Latin-1 views: lookups and inserts through them allocate nothing, which
// matters when a configuration carries tens of thousands of tracks. The length is
// taken from the array because QLatin1String's own constructor calls strlen, which
// is not a constant expression everywhere.
template <int N>
constexpr QLatin1String Key(const char (&text)[N])
{
    return QLatin1String(text, N - 1);
}

constexpr QLatin1String kAdsVolume = Key("ads_volume");
constexpr QLatin1String kActive = Key("active");
constexpr QLatin1String kAddress = Key("address");
constexpr QLatin1String kAdvanced = Key("advanced");
constexpr QLatin1String kAds = Key("ads");
constexpr QLatin1String kAuthor = Key("author");
constexpr QLatin1String kBusinessTypes = Key("business_types");
constexpr QLatin1String kCode = Key("code");
constexpr QLatin1String kConfiguration = Key("configuration");
constexpr QLatin1String kContent = Key("content");
constexpr QLatin1String kContentSizeBytes = Key("content_size_bytes");
constexpr QLatin1String kContentType = Key("content_type");
constexpr QLatin1String kContentVolume = Key("content_volume");
constexpr QLatin1String kContractNumber = Key("contract_number");
constexpr QLatin1String kData = Key("data");
constexpr QLatin1String kDate = Key("date");
constexpr QLatin1String kDay = Key("day");
constexpr QLatin1String kDayOfWeek = Key("day_of_week");
constexpr QLatin1String kDayOfWeekId = Key("day_of_week_id");
constexpr QLatin1String kDisablePlayerControl = Key("disable_player_control");
constexpr QLatin1String kDomains = Key("domains");
constexpr QLatin1String kEmail = Key("email");
constexpr QLatin1String kEndTime = Key("end_time_str");
constexpr QLatin1String kEvening = Key("evening");
constexpr QLatin1String kFileSizeBytes = Key("file_size_bytes");
constexpr QLatin1String kIconDarkTheme = Key("icon_dark_theme");
constexpr QLatin1String kIconLightTheme = Key("icon_light_theme");
constexpr QLatin1String kId = Key("id");
constexpr QLatin1String kImage = Key("image");
constexpr QLatin1String kInterruptContent = Key("interrupt_content");
constexpr QLatin1String kIsPrimary = Key("is_primary");
constexpr QLatin1String kLandingUrl = Key("landing_url");
constexpr QLatin1String kLikeStatus = Key("like_status");
constexpr QLatin1String kLiked = Key("liked");
constexpr QLatin1String kLogo = Key("logo");
constexpr QLatin1String kMain = Key("main");
constexpr QLatin1String kMd5 = Key("md5");
constexpr QLatin1String kMorning = Key("morning");
constexpr QLatin1String kMusic = Key("music");
constexpr QLatin1String kMusicPlaylistId = Key("music_playlist_id");
constexpr QLatin1String kMusicStyles = Key("music_styles");
constexpr QLatin1String kName = Key("name");
constexpr QLatin1String kNight = Key("night");
constexpr QLatin1String kObject = Key("object");
constexpr QLatin1String kObjects = Key("objects");
constexpr QLatin1String kOrganizationName = Key("organization_name");
constexpr QLatin1String kPath = Key("path");
constexpr QLatin1String kPeriods = Key("periods");
constexpr QLatin1String kPhone = Key("phone");
constexpr QLatin1String kPhoneCountryCode = Key("phone_country_code");
constexpr QLatin1String kPhoneSymbolLen = Key("phone_symbol_len");
constexpr QLatin1String kPhoto = Key("photo");
constexpr QLatin1String kPhotoPlaylistId = Key("photo_playlist_id");
constexpr QLatin1String kPlaylistId = Key("playlist_id");
constexpr QLatin1String kPlaylistName = Key("playlist_name");
constexpr QLatin1String kPlaylists = Key("playlists");
constexpr QLatin1String kPrivacyPolicyUrl = Key("privacy_policy_url");
constexpr QLatin1String kSchedule = Key("schedule");
constexpr QLatin1String kScheduleId = Key("schedule_id");
constexpr QLatin1String kScheduleName = Key("schedule_name");
constexpr QLatin1String kServers = Key("servers");
constexpr QLatin1String kSettings = Key("settings");
constexpr QLatin1String kShopId = Key("shop_id");
constexpr QLatin1String kStartTime = Key("start_time_str");
constexpr QLatin1String kToken = Key("token");
constexpr QLatin1String kTrack = Key("track");
constexpr QLatin1String kTracks = Key("tracks");
constexpr QLatin1String kTracksCount = Key("tracks_count");
constexpr QLatin1String kType = Key("type");
constexpr QLatin1String kUploadedByUser = Key("uploaded_by_user");
constexpr QLatin1String kUrl = Key("url");
constexpr QLatin1String kVersion = Key("version");
constexpr QLatin1String kVideo = Key("video");
constexpr QLatin1String kVideoPlaylistId = Key("video_playlist_id");

// A body that is not JSON, or whose top level is not an object, reads as an empty
// object: every member then takes its default.
QJsonObject TopLevelObject(const QString& body)
{
    return QJsonDocument::fromJson(body.toUtf8()).object();
}

std::string StdString(const QJsonValue& value)
{
    return value.toString().toStdString();
}

int Int(const QJsonObject& object, QLatin1String key)
{
    return object.value(key).toInt(0);
}

bool Bool(const QJsonObject& object, QLatin1String key)
{
    return object.value(key).toBool(false);
}

std::string String(const QJsonObject& object, QLatin1String key)
{
    return StdString(object.value(key));
}

QJsonArray Array(const QJsonObject& object, QLatin1String key)
{
    return object.value(key).toArray();
}

QJsonObject Object(const QJsonObject& object, QLatin1String key)
{
    return object.value(key).toObject();
}

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr std::size_t kByteOrderMarkSize = sizeof kByteOrderMark - 1;

// QString::fromUtf8 drops a byte order mark at the very start of its input. Inside a
// text field that character is data, and dropping it would make a stored
// configuration come back different from the one that was written.
QString QStringFromUtf8(const std::string& text)
{
    std::size_t offset = 0;
    while (text.compare(offset, kByteOrderMarkSize, kByteOrderMark) == 0) {
        offset += kByteOrderMarkSize;
    }
    if (offset == 0) {
        return QString::fromStdString(text);
    }
    QString result(static_cast<int>(offset / kByteOrderMarkSize), QChar(0xFEFF));
    result += QString::fromUtf8(text.data() + offset, static_cast<int>(text.size() - offset));
    return result;
}

QJsonValue StringValue(const std::string& text)
{
    return QJsonValue(QStringFromUtf8(text));
}

// A null "liked" means the user has not rated the track. A missing one is not null:
// it reads like any other missing boolean, as false, so the two must not be merged.
LikeStatus LikeStatusFromValue(const QJsonValue& value)
{
    if (value.isNull()) {
        return LikeStatus::None;
    }
    return value.toBool(false) ? LikeStatus::Liked : LikeStatus::Disliked;
}

QJsonValue LikeStatusToValue(LikeStatus status)
{
    switch (status) {
    case LikeStatus::None:
        break;
    case LikeStatus::Liked:
        return QJsonValue(true);
    case LikeStatus::Disliked:
        return QJsonValue(false);
    }
    return QJsonValue(QJsonValue::Null);
}

Track TrackFromObject(const QJsonObject& object, ContentType type)
{
    Track track;
    track.id = Int(object, kId);
    track.path = String(object, kPath);
    track.name = String(object, kName);
    track.author = String(object, kAuthor);
    track.image = String(object, kImage);
    track.md5 = String(object, kMd5);
    track.contentType = type;
    track.fileSize = Int(object, kFileSizeBytes);
    track.shopId = Int(object, kShopId);
    track.uploadedByUser = Bool(object, kUploadedByUser);
    track.likeStatus = LikeStatusFromValue(object.value(kLiked));
    return track;
}

PlaybackPeriod PeriodFromObject(const QJsonObject& object)
{
    PlaybackPeriod period;
    period.name = String(object, kName);
    period.startTime = String(object, kStartTime);
    period.endTime = String(object, kEndTime);
    period.contentVolume = Int(object, kContentVolume);
    period.adsVolume = Int(object, kAdsVolume);
    // A period outside any user-facing schedule comes with null id and name; a
    // half-null pair is treated the same, so the period never shows a name without
    // a schedule behind it.
    const QJsonValue scheduleId = object.value(kScheduleId);
    const QJsonValue scheduleName = object.value(kScheduleName);
    if (!scheduleId.isNull() && !scheduleName.isNull()) {
        period.scheduleId = scheduleId.toInt(0);
        period.scheduleName = StdString(scheduleName);
    }
    period.playlistIds.at(ContentType::Music) = Int(object, kMusicPlaylistId);
    period.playlistIds.at(ContentType::Video) = Int(object, kVideoPlaylistId);
    period.playlistIds.at(ContentType::Photo) = Int(object, kPhotoPlaylistId);
    return period;
}

Day DayFromObject(const QJsonObject& object)
{
    Day day;
    day.dayOfWeek = String(object, kDayOfWeek);
    day.date = String(object, kDate);
    day.dayOfWeekId = Int(object, kDayOfWeekId);
    day.periods = JsonConverter::PlaybackPeriodsFromArray(Array(object, kPeriods));
    day.scheduleName = String(object, kScheduleName);
    day.scheduleId = Int(object, kScheduleId);
    return day;
}

PlaybackPlaylist PlaylistFromObject(const QJsonObject& object)
{
    PlaybackPlaylist playlist;
    playlist.id = Int(object, kId);
    playlist.name = String(object, kName);
    playlist.contentType = DataTypes::Playback::ContentTypeFromString(String(object, kContentType));
    playlist.image = String(object, kImage);
    const QJsonArray trackIds = Array(object, kTracks);
    playlist.trackIds.reserve(static_cast<std::size_t>(trackIds.size()));
    for (const QJsonValue& trackId : trackIds) {
        playlist.trackIds.push_back(trackId.toInt(0));
    }
    return playlist;
}

AdBlock AdBlockFromObject(const QJsonObject& object)
{
    AdBlock adBlock;
    adBlock.name = String(object, kName);
    adBlock.interruptContent = Bool(object, kInterruptContent);
    adBlock.startTime = String(object, kStartTime);
    const QJsonArray entries = Array(object, kTracks);
    adBlock.tracks.reserve(static_cast<std::size_t>(entries.size()));
    for (const QJsonValue& value : entries) {
        const QJsonObject entry = value.toObject();
        adBlock.tracks.push_back({String(entry, kDate), Int(entry, kTrack)});
    }
    return adBlock;
}

// Walks an array whose elements should be objects; anything else in it is read as
// an empty object, so it still yields one element with every field at its default.
template <typename T, typename Read>
std::vector<T> ListFromArray(const QJsonArray& array, Read read)
{
    std::vector<T> list;
    list.reserve(static_cast<std::size_t>(array.size()));
    for (const QJsonValue& value : array) {
        list.push_back(read(value.toObject()));
    }
    return list;
}

template <typename T, typename Read>
std::vector<std::shared_ptr<T>> SharedListFromArray(const QJsonArray& array, Read read)
{
    std::vector<std::shared_ptr<T>> list;
    list.reserve(static_cast<std::size_t>(array.size()));
    for (const QJsonValue& value : array) {
        list.push_back(std::make_shared<T>(read(value.toObject())));
    }
    return list;
}

// Members are inserted in the sorted order QJsonObject keeps them in anyway, so
// every insert appends instead of shifting what is already there.
QJsonObject TrackToObject(const Track& track)
{
    QJsonObject object;
    object.insert(kAuthor, StringValue(track.author));
    object.insert(kFileSizeBytes, track.fileSize);
    object.insert(kId, track.id);
    object.insert(kImage, StringValue(track.image));
    object.insert(kLiked, LikeStatusToValue(track.likeStatus));
    object.insert(kMd5, StringValue(track.md5));
    object.insert(kName, StringValue(track.name));
    object.insert(kPath, StringValue(track.path));
    object.insert(kShopId, track.shopId);
    object.insert(kUploadedByUser, track.uploadedByUser);
    return object;
}

QJsonObject PeriodToObject(const PlaybackPeriod& period)
{
    QJsonObject object;
    object.insert(kAdsVolume, period.adsVolume);
    object.insert(kContentVolume, period.contentVolume);
    object.insert(kEndTime, StringValue(period.endTime));
    object.insert(kMusicPlaylistId, period.playlistIds.at(ContentType::Music));
    object.insert(kName, StringValue(period.name));
    object.insert(kPhotoPlaylistId, period.playlistIds.at(ContentType::Photo));
    object.insert(kScheduleId, period.scheduleId);
    object.insert(kScheduleName, StringValue(period.scheduleName));
    object.insert(kStartTime, StringValue(period.startTime));
    object.insert(kVideoPlaylistId, period.playlistIds.at(ContentType::Video));
    return object;
}

QJsonObject DayToObject(const Day& day)
{
    QJsonObject object;
    object.insert(kDate, StringValue(day.date));
    object.insert(kDayOfWeek, StringValue(day.dayOfWeek));
    object.insert(kDayOfWeekId, day.dayOfWeekId);
    object.insert(kPeriods, JsonConverter::PlaybackPeriodsToArray(day.periods));
    object.insert(kScheduleId, day.scheduleId);
    object.insert(kScheduleName, StringValue(day.scheduleName));
    return object;
}

QJsonObject PlaylistToObject(const PlaybackPlaylist& playlist)
{
    QJsonArray trackIds;
    for (const std::int32_t trackId : playlist.trackIds) {
        trackIds.append(trackId);
    }
    QJsonObject object;
    object.insert(kContentType, StringValue(DataTypes::Playback::ContentTypeToString(playlist.contentType)));
    object.insert(kId, playlist.id);
    object.insert(kImage, StringValue(playlist.image));
    object.insert(kName, StringValue(playlist.name));
    object.insert(kTracks, trackIds);
    return object;
}

QJsonObject AdBlockToObject(const AdBlock& adBlock)
{
    QJsonArray entries;
    for (const AdBlock::Entry& entry : adBlock.tracks) {
        QJsonObject object;
        object.insert(kDate, StringValue(entry.date));
        object.insert(kTrack, entry.trackId);
        entries.append(object);
    }
    QJsonObject object;
    object.insert(kInterruptContent, adBlock.interruptContent);
    object.insert(kName, StringValue(adBlock.name));
    object.insert(kStartTime, StringValue(adBlock.startTime));
    object.insert(kTracks, entries);
    return object;
}

template <typename T, typename Write>
QJsonArray ListToArray(const std::vector<T>& list, Write write)
{
    QJsonArray array;
    for (const T& element : list) {
        array.append(write(element));
    }
    return array;
}

// The configuration text is written straight from the data types instead of through
// a QJsonObject tree: building the tree costs as much as serialising it, and the
// database rewrites the whole configuration on every update. The output is byte for
// byte what QJsonDocument::toJson(QJsonDocument::Indented) makes of the trees built
// by the *ToArray functions (members in sorted key order, four spaces per level),
// except that U+FEFF is escaped.

// Strict RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF. Only
// text that passes can be copied as it is; anything else goes through QString, as
// the tree writer would take it.
bool IsValidUtf8(const std::string& text)
{
    const auto* byte = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = byte + text.size();
    while (byte != end) {
        const unsigned char lead = *byte++;
        if (lead < 0x80) {
            continue;
        }
        int continuationBytes = 0;
        unsigned char low = 0x80;
        unsigned char high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            continuationBytes = 1;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            continuationBytes = 2;
            low = lead == 0xE0 ? 0xA0 : 0x80;
            high = lead == 0xED ? 0x9F : 0xBF;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            continuationBytes = 3;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF;
        } else {
            return false;
        }
        if (end - byte < continuationBytes || *byte < low || *byte > high) {
            return false;
        }
        for (int i = 0; i < continuationBytes; ++i, ++byte) {
            if ((*byte & 0xC0) != 0x80) {
                return false;
            }
        }
    }
    return true;
}

// The escapes QJsonDocument uses: the short forms it knows, \u00xx with lower-case
// digits for other control characters, everything else as UTF-8. The one addition
// is U+FEFF: Qt's parser drops it unescaped at the start of a string, so it is
// always written as \ufeff.
void AppendEscaped(std::string& out, const char* text, std::size_t size)
{
    static constexpr char kHexDigits[] = "0123456789abcdef";
    out += '"';
    const char* run = text;
    const char* const end = text + size;
    for (const char* current = text; current != end; ++current) {
        const auto byte = static_cast<unsigned char>(*current);
        if (byte >= 0x20 && byte != '"' && byte != '\\' && byte != 0xEF) {
            continue;
        }
        if (byte == 0xEF) {
            if (static_cast<std::size_t>(end - current) < kByteOrderMarkSize ||
                std::char_traits<char>::compare(current, kByteOrderMark, kByteOrderMarkSize) != 0) {
                continue;
            }
            out.append(run, current);
            out += "\\ufeff";
            current += kByteOrderMarkSize - 1;
            run = current + 1;
            continue;
        }
        out.append(run, current);
        run = current + 1;
        out += '\\';
        switch (byte) {
        case '"':
            out += '"';
            break;
        case '\\':
            out += '\\';
            break;
        case '\b':
            out += 'b';
            break;
        case '\f':
            out += 'f';
            break;
        case '\n':
            out += 'n';
            break;
        case '\r':
            out += 'r';
            break;
        case '\t':
            out += 't';
            break;
        default:
            out += "u00";
            out += kHexDigits[byte >> 4];
            out += kHexDigits[byte & 0xF];
            break;
        }
    }
    out.append(run, end);
    out += '"';
}

void AppendString(std::string& out, const std::string& text)
{
    if (IsValidUtf8(text)) {
        AppendEscaped(out, text.data(), text.size());
        return;
    }
    const QByteArray repaired = QStringFromUtf8(text).toUtf8();
    AppendEscaped(out, repaired.constData(), static_cast<std::size_t>(repaired.size()));
}

void AppendInt(std::string& out, std::int32_t value)
{
    char digits[16];
    const std::to_chars_result result = std::to_chars(std::begin(digits), std::end(digits), value);
    out.append(digits, result.ptr);
}

void AppendBool(std::string& out, bool value)
{
    out += value ? "true" : "false";
}

void AppendLikeStatus(std::string& out, LikeStatus status)
{
    switch (status) {
    case LikeStatus::None:
        break;
    case LikeStatus::Liked:
        AppendBool(out, true);
        return;
    case LikeStatus::Disliked:
        AppendBool(out, false);
        return;
    }
    out += "null";
}

void AppendIndent(std::string& out, int level)
{
    out.append(static_cast<std::size_t>(level) * 4, ' ');
}

// Starts a member of an object whose own indentation is level - 1; every member but
// the first is preceded by the separator.
void AppendKey(std::string& out, int level, QLatin1String key, bool first = false)
{
    if (!first) {
        out += ",\n";
    }
    AppendIndent(out, level);
    out += '"';
    out.append(key.data(), static_cast<std::size_t>(key.size()));
    out += "\": ";
}

void OpenObject(std::string& out)
{
    out += "{\n";
}

void CloseObject(std::string& out, int level)
{
    out += '\n';
    AppendIndent(out, level);
    out += '}';
}

template <typename T, typename Write>
void AppendArray(std::string& out, int level, const std::vector<T>& list, Write write)
{
    out += "[\n";
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i != 0) {
            out += ",\n";
        }
        AppendIndent(out, level + 1);
        write(out, level + 1, list[i]);
    }
    if (!list.empty()) {
        out += '\n';
    }
    AppendIndent(out, level);
    out += ']';
}

void AppendTrack(std::string& out, int level, const Track& track)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kAuthor, true);
    AppendString(out, track.author);
    AppendKey(out, inner, kFileSizeBytes);
    AppendInt(out, track.fileSize);
    AppendKey(out, inner, kId);
    AppendInt(out, track.id);
    AppendKey(out, inner, kImage);
    AppendString(out, track.image);
    AppendKey(out, inner, kLiked);
    AppendLikeStatus(out, track.likeStatus);
    AppendKey(out, inner, kMd5);
    AppendString(out, track.md5);
    AppendKey(out, inner, kName);
    AppendString(out, track.name);
    AppendKey(out, inner, kPath);
    AppendString(out, track.path);
    AppendKey(out, inner, kShopId);
    AppendInt(out, track.shopId);
    AppendKey(out, inner, kUploadedByUser);
    AppendBool(out, track.uploadedByUser);
    CloseObject(out, level);
}

void AppendPeriod(std::string& out, int level, const PlaybackPeriod& period)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kAdsVolume, true);
    AppendInt(out, period.adsVolume);
    AppendKey(out, inner, kContentVolume);
    AppendInt(out, period.contentVolume);
    AppendKey(out, inner, kEndTime);
    AppendString(out, period.endTime);
    AppendKey(out, inner, kMusicPlaylistId);
    AppendInt(out, period.playlistIds.at(ContentType::Music));
    AppendKey(out, inner, kName);
    AppendString(out, period.name);
    AppendKey(out, inner, kPhotoPlaylistId);
    AppendInt(out, period.playlistIds.at(ContentType::Photo));
    AppendKey(out, inner, kScheduleId);
    AppendInt(out, period.scheduleId);
    AppendKey(out, inner, kScheduleName);
    AppendString(out, period.scheduleName);
    AppendKey(out, inner, kStartTime);
    AppendString(out, period.startTime);
    AppendKey(out, inner, kVideoPlaylistId);
    AppendInt(out, period.playlistIds.at(ContentType::Video));
    CloseObject(out, level);
}

void AppendDay(std::string& out, int level, const Day& day)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kDate, true);
    AppendString(out, day.date);
    AppendKey(out, inner, kDayOfWeek);
    AppendString(out, day.dayOfWeek);
    AppendKey(out, inner, kDayOfWeekId);
    AppendInt(out, day.dayOfWeekId);
    AppendKey(out, inner, kPeriods);
    AppendArray(out, inner, day.periods, AppendPeriod);
    AppendKey(out, inner, kScheduleId);
    AppendInt(out, day.scheduleId);
    AppendKey(out, inner, kScheduleName);
    AppendString(out, day.scheduleName);
    CloseObject(out, level);
}

void AppendPlaylist(std::string& out, int level, const PlaybackPlaylist& playlist)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kContentType, true);
    AppendString(out, DataTypes::Playback::ContentTypeToString(playlist.contentType));
    AppendKey(out, inner, kId);
    AppendInt(out, playlist.id);
    AppendKey(out, inner, kImage);
    AppendString(out, playlist.image);
    AppendKey(out, inner, kName);
    AppendString(out, playlist.name);
    AppendKey(out, inner, kTracks);
    AppendArray(out, inner, playlist.trackIds,
                [](std::string& text, int, std::int32_t id) { AppendInt(text, id); });
    CloseObject(out, level);
}

void AppendAdBlockEntry(std::string& out, int level, const AdBlock::Entry& entry)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kDate, true);
    AppendString(out, entry.date);
    AppendKey(out, inner, kTrack);
    AppendInt(out, entry.trackId);
    CloseObject(out, level);
}

void AppendAdBlock(std::string& out, int level, const AdBlock& adBlock)
{
    const int inner = level + 1;
    OpenObject(out);
    AppendKey(out, inner, kInterruptContent, true);
    AppendBool(out, adBlock.interruptContent);
    AppendKey(out, inner, kName);
    AppendString(out, adBlock.name);
    AppendKey(out, inner, kStartTime);
    AppendString(out, adBlock.startTime);
    AppendKey(out, inner, kTracks);
    AppendArray(out, inner, adBlock.tracks, AppendAdBlockEntry);
    CloseObject(out, level);
}

// One content object per kind, in AllContentTypes() order, each carrying its kind
// in "type"; the tracks themselves do not repeat it.
void AppendContent(std::string& out, int level, const PlaybackConfiguration& configuration)
{
    const std::vector<ContentType> types = AllContentTypes();
    AppendArray(out, level, types, [&configuration](std::string& text, int objectLevel, ContentType type) {
        const int inner = objectLevel + 1;
        OpenObject(text);
        AppendKey(text, inner, kTracks, true);
        AppendArray(text, inner, configuration.tracks.at(type), AppendTrack);
        AppendKey(text, inner, kType);
        AppendString(text, DataTypes::Playback::ContentTypeToString(type));
        CloseObject(text, objectLevel);
    });
}

DataTypes::Auth::Server ServerFromObject(const QJsonObject& object)
{
    DataTypes::Auth::Server server;
    server.id = Int(object, kId);
    server.name = String(object, kName);
    server.url = String(object, kUrl);
    server.email = String(object, kEmail);
    server.phone = String(object, kPhone);
    server.privacyPolicyUrl = String(object, kPrivacyPolicyUrl);
    server.landingUrl = String(object, kLandingUrl);
    server.isPrimary = Bool(object, kIsPrimary);
    server.phoneCountryCode = String(object, kPhoneCountryCode);
    server.phoneSymbolLen = Int(object, kPhoneSymbolLen);
    return server;
}

DataTypes::Auth::BusinessType BusinessTypeFromObject(const QJsonObject& object)
{
    DataTypes::Auth::BusinessType businessType;
    businessType.id = Int(object, kId);
    businessType.name = String(object, kName);
    businessType.image = String(object, kImage);
    businessType.iconDarkTheme = String(object, kIconDarkTheme);
    businessType.iconLightTheme = String(object, kIconLightTheme);
    return businessType;
}

DataTypes::Auth::MusicStyle MusicStyleFromObject(const QJsonObject& object)
{
    DataTypes::Auth::MusicStyle musicStyle;
    musicStyle.id = Int(object, kId);
    musicStyle.name = String(object, kName);
    musicStyle.image = String(object, kImage);
    return musicStyle;
}

DataTypes::Auth::PlaybackObject PlaybackObjectFromObject(const QJsonObject& object)
{
    DataTypes::Auth::PlaybackObject playbackObject;
    playbackObject.id = Int(object, kId);
    playbackObject.name = String(object, kName);
    playbackObject.address = String(object, kAddress);
    playbackObject.code = String(object, kCode);
    playbackObject.contractNumber = String(object, kContractNumber);
    playbackObject.image = String(object, kImage);
    playbackObject.logo = String(object, kLogo);
    playbackObject.disablePlayerControl = Bool(object, kDisablePlayerControl);
    playbackObject.organizationName = String(object, kOrganizationName);
    return playbackObject;
}

DataTypes::Playlists::RecommendedPlaylist RecommendedPlaylistFromObject(const QJsonObject& object)
{
    DataTypes::Playlists::RecommendedPlaylist playlist;
    playlist.id = Int(object, kId);
    playlist.name = String(object, kName);
    playlist.image = String(object, kImage);
    playlist.main = Bool(object, kMain);
    return playlist;
}

CataloguePlaylist CataloguePlaylistFromObject(const QJsonObject& object)
{
    CataloguePlaylist playlist;
    playlist.id = Int(object, kId);
    playlist.name = String(object, kName);
    playlist.image = String(object, kImage);
    playlist.contentSizeBytes = object.value(kContentSizeBytes).toDouble(0.0);
    playlist.tracksCount = Int(object, kTracksCount);
    playlist.active = Bool(object, kActive);
    return playlist;
}

CatalogueTrack CatalogueTrackFromObject(const QJsonObject& object)
{
    CatalogueTrack track;
    track.id = Int(object, kId);
    track.name = String(object, kName);
    track.author = String(object, kAuthor);
    track.image = String(object, kImage);
    return track;
}

QJsonObject PlaylistIdObject(std::int32_t playlistId)
{
    QJsonObject object;
    object.insert(kPlaylistId, playlistId);
    return object;
}

} // namespace

std::shared_ptr<PlaybackConfiguration> JsonConverter::PlaybackConfigurationFromResponse(const QString& body)
{
    const QJsonObject object = Object(TopLevelObject(body), kConfiguration);
    auto configuration = std::make_shared<PlaybackConfiguration>();
    configuration->version = Int(object, kVersion);
    configuration->domains = DomainsFromArray(Array(object, kDomains));
    configuration->days = DaysFromArray(Array(object, kSchedule));
    configuration->playlists = PlaylistsWithTracksFromArray(Array(object, kPlaylists));
    configuration->adBlocks = AdBlocksFromArray(Array(object, kAds));
    const QJsonArray content = Array(object, kContent);
    for (const ContentType type : AllContentTypes()) {
        configuration->tracks[type] = TracksFromArray(content, type);
    }
    return configuration;
}

long JsonConverter::PlaybackConfigurationVersionFromResponse(const QString& body)
{
    return static_cast<long>(IntFromResponse(body, kVersion));
}

std::vector<std::string> JsonConverter::DomainsFromArray(const QJsonArray& array)
{
    std::vector<std::string> domains;
    domains.reserve(static_cast<std::size_t>(array.size()));
    for (const QJsonValue& value : array) {
        domains.push_back(StdString(value));
    }
    return domains;
}

std::vector<Day> JsonConverter::DaysFromArray(const QJsonArray& array)
{
    return ListFromArray<Day>(array, DayFromObject);
}

std::vector<PlaybackPeriod> JsonConverter::PlaybackPeriodsFromArray(const QJsonArray& array)
{
    return ListFromArray<PlaybackPeriod>(array, PeriodFromObject);
}

std::vector<PlaybackPlaylist> JsonConverter::PlaylistsWithTracksFromArray(const QJsonArray& array)
{
    return ListFromArray<PlaybackPlaylist>(array, PlaylistFromObject);
}

std::vector<AdBlock> JsonConverter::AdBlocksFromArray(const QJsonArray& array)
{
    return ListFromArray<AdBlock>(array, AdBlockFromObject);
}

std::vector<Track> JsonConverter::TracksFromArray(const QJsonArray& contentArray, ContentType type)
{
    // Exact on both sides: "Music" is no kind at all, and an unknown word only ever
    // matches the "photo" string, never through ContentTypeFromString's catch-all.
    const QString typeName = QString::fromStdString(DataTypes::Playback::ContentTypeToString(type));
    std::vector<Track> tracks;
    for (const QJsonValue& contentValue : contentArray) {
        const QJsonObject content = contentValue.toObject();
        if (content.value(kType).toString() != typeName) {
            continue;
        }
        const QJsonArray trackArray = Array(content, kTracks);
        tracks.reserve(tracks.size() + static_cast<std::size_t>(trackArray.size()));
        for (const QJsonValue& trackValue : trackArray) {
            tracks.push_back(TrackFromObject(trackValue.toObject(), type));
        }
    }
    return tracks;
}

QString JsonConverter::PlaybackConfigurationToString(const PlaybackConfiguration& configuration)
{
    std::string out;
    OpenObject(out);
    AppendKey(out, 1, kConfiguration, true);
    OpenObject(out);
    AppendKey(out, 2, kAds, true);
    AppendArray(out, 2, configuration.adBlocks, AppendAdBlock);
    AppendKey(out, 2, kContent);
    AppendContent(out, 2, configuration);
    AppendKey(out, 2, kDomains);
    AppendArray(out, 2, configuration.domains,
                [](std::string& text, int, const std::string& domain) { AppendString(text, domain); });
    AppendKey(out, 2, kPlaylists);
    AppendArray(out, 2, configuration.playlists, AppendPlaylist);
    AppendKey(out, 2, kSchedule);
    AppendArray(out, 2, configuration.days, AppendDay);
    AppendKey(out, 2, kVersion);
    AppendInt(out, configuration.version);
    CloseObject(out, 1);
    CloseObject(out, 0);
    out += '\n';
    // QString counts in int, like every Qt container; past that Qt itself fails the
    // same way.
    if (out.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    return QString::fromUtf8(out.data(), static_cast<int>(out.size()));
}

QJsonArray JsonConverter::DomainsToArray(const std::vector<std::string>& domains)
{
    return ListToArray(domains, StringValue);
}

QJsonArray JsonConverter::DaysToArray(const std::vector<Day>& days)
{
    return ListToArray(days, DayToObject);
}

QJsonArray JsonConverter::PlaybackPeriodsToArray(const std::vector<PlaybackPeriod>& periods)
{
    return ListToArray(periods, PeriodToObject);
}

QJsonArray JsonConverter::PlaylistsWithTracksToArray(const std::vector<PlaybackPlaylist>& playlists)
{
    return ListToArray(playlists, PlaylistToObject);
}

QJsonArray JsonConverter::AdBlocksToArray(const std::vector<AdBlock>& adBlocks)
{
    return ListToArray(adBlocks, AdBlockToObject);
}

QJsonArray JsonConverter::TracksToArray(const std::vector<Track>& tracks)
{
    return ListToArray(tracks, TrackToObject);
}

std::string JsonConverter::StringFromResponse(const QString& body, const QString& key)
{
    return StdString(TopLevelObject(body).value(key));
}

int JsonConverter::IntFromResponse(const QString& body, const QString& key)
{
    return TopLevelObject(body).value(key).toInt(0);
}

QJsonArray JsonConverter::ArrayFromDataResponse(const QString& body, const QString& key)
{
    return TopLevelObject(body).value(key).toArray();
}

QJsonObject JsonConverter::JsonObjectFromDataResponse(const QString& body, const QString& key)
{
    return TopLevelObject(body).value(key).toObject();
}

QJsonObject JsonConverter::DataObjectFromDataResponse(const QString& body)
{
    return Object(TopLevelObject(body), kData);
}

std::vector<std::shared_ptr<DataTypes::Auth::Server>> JsonConverter::ServersFromResponse(const QString& body)
{
    return SharedListFromArray<DataTypes::Auth::Server>(Array(TopLevelObject(body), kServers),
                                                        ServerFromObject);
}

std::string JsonConverter::ConfirmationCodeFromResponse(const QString& body)
{
    return String(TopLevelObject(body), kCode);
}

std::string JsonConverter::TokenFromResponse(const QString& body)
{
    return String(TopLevelObject(body), kToken);
}

std::vector<std::shared_ptr<DataTypes::Auth::BusinessType>>
JsonConverter::BusinessTypesFromResponse(const QString& body)
{
    return SharedListFromArray<DataTypes::Auth::BusinessType>(Array(TopLevelObject(body), kBusinessTypes),
                                                              BusinessTypeFromObject);
}

std::vector<std::shared_ptr<DataTypes::Auth::MusicStyle>>
JsonConverter::MusicStylesFromResponse(const QString& body)
{
    return SharedListFromArray<DataTypes::Auth::MusicStyle>(Array(TopLevelObject(body), kMusicStyles),
                                                            MusicStyleFromObject);
}

std::shared_ptr<DataTypes::Auth::PlaybackObject>
JsonConverter::PlaybackObjectFromResponse(const QString& body)
{
    return PlaybackObjectFromJsonObject(Object(TopLevelObject(body), kObject));
}

std::vector<std::shared_ptr<DataTypes::Auth::PlaybackObject>>
JsonConverter::PlaybackObjectsFromResponse(const QString& body)
{
    return SharedListFromArray<DataTypes::Auth::PlaybackObject>(Array(TopLevelObject(body), kObjects),
                                                                PlaybackObjectFromObject);
}

std::shared_ptr<DataTypes::Auth::PlaybackObject>
JsonConverter::PlaybackObjectFromJsonObject(const QJsonObject& object)
{
    return std::make_shared<DataTypes::Auth::PlaybackObject>(PlaybackObjectFromObject(object));
}

std::vector<std::shared_ptr<DataTypes::Playlists::RecommendedPlaylist>>
JsonConverter::RecommendedPlaylistsFromResponse(const QString& body)
{
    return SharedListFromArray<DataTypes::Playlists::RecommendedPlaylist>(
        Array(TopLevelObject(body), kPlaylists), RecommendedPlaylistFromObject);
}

std::vector<std::shared_ptr<CataloguePlaylist>> JsonConverter::PlaylistsFromResponse(const QString& body)
{
    return PlaylistsFromArray(Array(TopLevelObject(body), kPlaylists));
}

std::vector<std::shared_ptr<CataloguePlaylist>> JsonConverter::PlaylistsFromArray(const QJsonArray& array)
{
    return SharedListFromArray<CataloguePlaylist>(array, CataloguePlaylistFromObject);
}

std::shared_ptr<std::vector<CatalogueTrack>> JsonConverter::TracksFromResponse(const QString& body)
{
    const QJsonObject data = Object(TopLevelObject(body), kData);
    return std::make_shared<std::vector<CatalogueTrack>>(PlaylistTracksFromArray(Array(data, kTracks)));
}

std::vector<CatalogueTrack> JsonConverter::PlaylistTracksFromArray(const QJsonArray& array)
{
    return ListFromArray<CatalogueTrack>(array, CatalogueTrackFromObject);
}

std::shared_ptr<DataTypes::Playlists::PlaylistsSettings>
JsonConverter::PlaylistsSettingsFromResponse(const QString& body)
{
    const QJsonObject settingsObject = Object(TopLevelObject(body), kSettings);
    auto settings = std::make_shared<DataTypes::Playlists::PlaylistsSettings>();
    settings->music = ContentPlaylistSettingsFromJson(Object(settingsObject, kMusic));
    settings->video = ContentPlaylistSettingsFromJson(Object(settingsObject, kVideo));
    settings->photo = ContentPlaylistSettingsFromJson(Object(settingsObject, kPhoto));
    return settings;
}

std::string JsonConverter::CertificateUrlFromResponse(const QString& body)
{
    return String(TopLevelObject(body), kUrl);
}

LikeStatus JsonConverter::LikeStatusFromResponse(const QString& body)
{
    // Unlike a track's "liked", a reply without the key means nothing is known yet.
    const QJsonObject object = TopLevelObject(body);
    if (!object.contains(kLikeStatus)) {
        return LikeStatus::None;
    }
    return LikeStatusFromValue(object.value(kLikeStatus));
}

QJsonObject JsonConverter::PlaylistsSettingsToJson(const DataTypes::Playlists::PlaylistsSettings& settings)
{
    QJsonObject inner;
    inner.insert(kMusic, ContentPlaylistSettingsToJson(settings.music));
    inner.insert(kVideo, ContentPlaylistSettingsToJson(settings.video));
    inner.insert(kPhoto, ContentPlaylistSettingsToJson(settings.photo));
    QJsonObject outer;
    outer.insert(kSettings, inner);
    return outer;
}

ContentPlaylistSettings ContentPlaylistSettingsFromJson(const QJsonObject& object)
{
    ContentPlaylistSettings settings;
    settings.advanced = Bool(object, kAdvanced);
    settings.playlistId = Int(object, kPlaylistId);
    settings.playlistName = String(object, kPlaylistName);
    const QJsonObject morning = Object(object, kMorning);
    settings.morningPlaylistId = Int(morning, kPlaylistId);
    settings.morningPlaylistName = String(morning, kPlaylistName);
    const QJsonObject day = Object(object, kDay);
    settings.dayPlaylistId = Int(day, kPlaylistId);
    settings.dayPlaylistName = String(day, kPlaylistName);
    const QJsonObject evening = Object(object, kEvening);
    settings.eveningPlaylistId = Int(evening, kPlaylistId);
    settings.eveningPlaylistName = String(evening, kPlaylistName);
    const QJsonObject night = Object(object, kNight);
    settings.nightPlaylistId = Int(night, kPlaylistId);
    settings.nightPlaylistName = String(night, kPlaylistName);
    return settings;
}

// The server only needs ids; it knows the names. The all-day id is left out of an
// advanced setting and the parts of the day out of a simple one.
QJsonObject ContentPlaylistSettingsToJson(const ContentPlaylistSettings& settings)
{
    QJsonObject object;
    object.insert(kAdvanced, settings.advanced);
    if (!settings.advanced) {
        object.insert(kPlaylistId, settings.playlistId);
        return object;
    }
    object.insert(kMorning, PlaylistIdObject(settings.morningPlaylistId));
    object.insert(kDay, PlaylistIdObject(settings.dayPlaylistId));
    object.insert(kEvening, PlaylistIdObject(settings.eveningPlaylistId));
    object.insert(kNight, PlaylistIdObject(settings.nightPlaylistId));
    return object;
}

} // namespace Core::Networking
