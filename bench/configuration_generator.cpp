#include "configuration_generator.h"

#include <QDate>

#include <array>
#include <cstdio>

namespace Bench {

namespace {

using Core::DataTypes::Playback::AdBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Day;
using Core::DataTypes::Playback::LikeStatus;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
using Core::DataTypes::Playback::Track;

constexpr const char* kAdjectives[] = {
    "Утренний", "Летний", "Тихий",    "Солнечный", "Вечерний", "Осенний", "Городской",
    "Морской",  "Лунный", "Весенний", "Зимний",    "Нежный",   "Яркий",   "Северный",
};
constexpr const char* kNouns[] = {
    "джаз",  "бриз",  "вальс", "рассвет", "ветер",   "сад",  "блюз",
    "берег", "город", "дождь", "танец",   "полдень", "свет", "маршрут",
};
constexpr const char* kFirstNames[] = {"Анна",  "Сергей", "Мария",     "Дмитрий",
                                       "Ольга", "Илья",   "Екатерина", "Павел"};
constexpr const char* kLastNames[] = {"Соколова", "Иванов",  "Кузнецова", "Орлов",
                                      "Белова",   "Фёдоров", "Морозова"};
constexpr const char* kBands[] = {"Оркестр «Белые ночи»", "Квартет \"Невский\"", "Ансамбль «Волга»",
                                  "Трио «Сумерки»", "Группа O'Neill & Co"};
constexpr const char* kDaysOfWeek[] = {"Понедельник", "Вторник", "Среда",      "Четверг",
                                       "Пятница",     "Суббота", "Воскресенье"};
constexpr const char* kAdNames[] = {"Скидки недели",  "Новая коллекция", "Кофе с собой",
                                    "Бонусная карта", "Распродажа",      "Акция 1+1"};

template <typename T, std::size_t N>
constexpr int Count(const T (&)[N])
{
    return static_cast<int>(N);
}

std::string TimeOfDay(int hour)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02d:00:00", hour % 24);
    return text;
}

} // namespace

ConfigurationGenerator::ConfigurationGenerator(std::uint32_t seed)
    : random_(seed)
{
}

int ConfigurationGenerator::Pick(int count)
{
    return std::uniform_int_distribution<int>(0, count - 1)(random_);
}

const char* ConfigurationGenerator::PickWord(const char* const* words, int count)
{
    return words[Pick(count)];
}

std::string ConfigurationGenerator::Title()
{
    return std::string(PickWord(kAdjectives, Count(kAdjectives))) + " " + PickWord(kNouns, Count(kNouns)) +
           " №" + std::to_string(Pick(1000));
}

std::string ConfigurationGenerator::Author()
{
    if (Pick(3) == 0) {
        return PickWord(kBands, Count(kBands));
    }
    return std::string(PickWord(kFirstNames, Count(kFirstNames))) + " " +
           PickWord(kLastNames, Count(kLastNames));
}

std::string ConfigurationGenerator::Md5()
{
    static constexpr char kHex[] = "0123456789abcdef";
    std::string digest(32, '0');
    for (char& digit : digest) {
        digit = kHex[Pick(16)];
    }
    return digest;
}

std::string ConfigurationGenerator::Date(int dayIndex) const
{
    return QDate(2024, 5, 6).addDays(dayIndex).toString(Qt::ISODate).toStdString();
}

Track ConfigurationGenerator::MakeTrack(ContentType type, std::int32_t id)
{
    static constexpr const char* kFolders[] = {"clip", "music", "video", "photo"};
    static constexpr const char* kExtensions[] = {".mp3", ".mp3", ".mp4", ".jpg"};
    const auto kind = static_cast<std::size_t>(type);

    Track track;
    track.id = id;
    track.name = Title();
    track.author = Author();
    track.md5 = Md5();
    track.path = std::string(kFolders[kind]) + "/2024/" + track.md5.substr(0, 2) + "/" + track.name + " — " +
                 track.author + kExtensions[kind];
    track.image = "covers/" + track.md5.substr(2, 8) + ".jpg";
    track.contentType = type;
    track.fileSize = 200'000 + Pick(12'000'000);
    track.shopId = 4711;
    track.uploadedByUser = Pick(10) == 0;
    static constexpr LikeStatus kLikes[] = {LikeStatus::None, LikeStatus::None, LikeStatus::Liked,
                                            LikeStatus::Disliked};
    track.likeStatus = kLikes[Pick(4)];
    return track;
}

PlaybackConfiguration ConfigurationGenerator::Generate(const Sizes& sizes)
{
    PlaybackConfiguration configuration;
    configuration.version = 1843;
    configuration.domains = {"https://cdn1.example.ru/media/", "https://cdn2.example.ru/media/"};

    const std::array<int, 4> trackCounts = {sizes.clips, sizes.musicTracks, sizes.videoTracks,
                                            sizes.photoTracks};
    std::array<std::vector<std::int32_t>, 4> idsByKind;
    std::int32_t nextId = 100'000;
    for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
        const auto kind = static_cast<std::size_t>(type);
        std::vector<Track>& tracks = configuration.tracks[type];
        tracks.reserve(static_cast<std::size_t>(trackCounts[kind]));
        for (int i = 0; i < trackCounts[kind]; ++i) {
            tracks.push_back(MakeTrack(type, nextId));
            idsByKind[kind].push_back(nextId++);
        }
    }

    // Playlists of background content only; clips reach the schedule through ad blocks.
    static constexpr ContentType kPlaylistKinds[] = {ContentType::Music, ContentType::Music,
                                                     ContentType::Video, ContentType::Photo};
    std::array<std::vector<std::int32_t>, 4> playlistIdsByKind;
    for (int i = 0; i < sizes.playlists; ++i) {
        Playlist playlist;
        playlist.id = 500 + i;
        playlist.contentType = kPlaylistKinds[i % Count(kPlaylistKinds)];
        playlist.name = "Плейлист «" + Title() + "»";
        playlist.image = "playlists/" + std::to_string(playlist.id) + ".png";
        const std::vector<std::int32_t>& pool = idsByKind[static_cast<std::size_t>(playlist.contentType)];
        const int length = 20 + Pick(60);
        for (int j = 0; j < length && !pool.empty(); ++j) {
            playlist.trackIds.push_back(pool[static_cast<std::size_t>(Pick(static_cast<int>(pool.size())))]);
        }
        playlistIdsByKind[static_cast<std::size_t>(playlist.contentType)].push_back(playlist.id);
        configuration.playlists.push_back(std::move(playlist));
    }

    const auto pickPlaylist = [&](ContentType type) {
        const std::vector<std::int32_t>& pool = playlistIdsByKind[static_cast<std::size_t>(type)];
        return pool.empty() ? 0 : pool[static_cast<std::size_t>(Pick(static_cast<int>(pool.size())))];
    };
    for (int d = 0; d < sizes.days; ++d) {
        Day day;
        day.dayOfWeek = kDaysOfWeek[d % Count(kDaysOfWeek)];
        day.dayOfWeekId = d % 7 + 1;
        day.date = Date(d);
        day.scheduleId = 31;
        day.scheduleName = "Основное расписание";
        for (int p = 0; p < sizes.periodsPerDay; ++p) {
            PlaybackPeriod period;
            period.name = "Период " + std::to_string(p + 1) + (p < 12 ? " (утро)" : " (вечер)");
            period.startTime = TimeOfDay(p);
            period.endTime = TimeOfDay(p + 1);
            if (p % 5 != 0) {
                period.scheduleId = 31;
                period.scheduleName = "Основное расписание";
            }
            period.contentVolume = 40 + Pick(60);
            period.adsVolume = 50 + Pick(50);
            period.playlistIds.at(ContentType::Music) = pickPlaylist(ContentType::Music);
            period.playlistIds.at(ContentType::Video) = pickPlaylist(ContentType::Video);
            period.playlistIds.at(ContentType::Photo) = p % 3 == 0 ? 0 : pickPlaylist(ContentType::Photo);
            day.periods.push_back(std::move(period));
        }
        configuration.days.push_back(std::move(day));
    }

    const std::vector<std::int32_t>& clipIds = idsByKind[static_cast<std::size_t>(ContentType::Clip)];
    for (int b = 0; b < sizes.adBlocks; ++b) {
        AdBlock adBlock;
        adBlock.name = std::string(PickWord(kAdNames, Count(kAdNames))) + " #" + std::to_string(b + 1);
        adBlock.interruptContent = b % 4 == 0;
        adBlock.startTime = TimeOfDay(8 + b % 14).replace(3, 2, std::to_string(10 + b % 50));
        for (int d = 0; d < sizes.days; ++d) {
            for (int c = 0; c < sizes.clipsPerAdBlockDate && !clipIds.empty(); ++c) {
                adBlock.tracks.push_back(
                    {Date(d), clipIds[static_cast<std::size_t>(Pick(static_cast<int>(clipIds.size())))]});
            }
        }
        configuration.adBlocks.push_back(std::move(adBlock));
    }
    return configuration;
}

} // namespace Bench
