#include "core/utilities/playback_configuration_loader.h"

#include "core/data_types/json_deserialization_error.h"
#include "core/database/db_manager.h"
#include "core/utilities/local_time_helper.h"
#include "core/utilities/logger.h"

#include <utility>

namespace Core::Utilities {

namespace {

void Finish(const PlaybackConfigurationLoader::Handlers& handlers, bool changed)
{
    if (handlers.success) {
        handlers.success(changed, PlaybackConfigurationLoader::UserFacingUpdateTime());
    }
}

void Fail(const PlaybackConfigurationLoader::Handlers& handlers, std::shared_ptr<DataTypes::Error> error)
{
    if (handlers.failure) {
        handlers.failure(std::move(error));
    }
}

} // namespace

void PlaybackConfigurationLoader::UpdatePlaybackConfiguration(
    Networking::ServerConnection& connection, std::function<void(bool, std::string)> success,
    std::function<void(std::shared_ptr<DataTypes::Error>)> failure)
{
    Handlers handlers{std::move(success), std::move(failure)};
    Logger::Log("Начало обновления конфигурации воспроизведения");
    Logger::Log("\tЗапрос версии конфигурации воспроизведения из локальной базы данных");
    long localVersion = 0;
    if (DataBase::DbManager::GetInstance().SavedPlaybackConfiguration(localVersion)) {
        Logger::Log("\tВ локальной базе есть сохраненная конфигурация воспроизведения с версией " +
                    std::to_string(localVersion));
        GetPlaybackConfigurationVersionFromApi(connection, std::move(handlers), localVersion);
    } else {
        Logger::Log("\tВ локальной базе нет сохраненной конфигурации воспроизведения");
        LoadPlaybackConfigurationFromApi(connection, std::move(handlers));
    }
}

void PlaybackConfigurationLoader::GetPlaybackConfigurationVersionFromApi(
    Networking::ServerConnection& connection, Handlers handlers, long localVersion)
{
    Logger::Log("\tНачинаем запрос версии конфигурации с сервера");
    connection.PlaybackConfigurationVersion(
        [&connection, handlers, localVersion](long serverVersion) {
            Logger::Log("\tПолучена версия конфигурации воспроизведения с сервера: " +
                        std::to_string(serverVersion));
            // Only equality counts: a server that went back to an older version is
            // followed as well.
            if (serverVersion == localVersion) {
                Logger::Log("\tВерсия сохраненной конфигурации совпадает с версией на сервере");
                Logger::Log("\tПроцесс обновления конфигурации окончен");
                Finish(handlers, false);
                return;
            }
            Logger::Log("\tВерсия сохраненной конфигурации НЕ совпадает с версией на сервере");
            LoadPlaybackConfigurationFromApi(connection, handlers);
        },
        [handlers](std::shared_ptr<DataTypes::NetworkError> error) {
            Logger::Log("\tОшибка при получении версии конфигурации воспроизведения с сервера: " +
                        (error ? error->message : std::string()));
            Logger::Log("\tИспользуем локальную конфигурации воспроизведения, завершение процесса обновления "
                        "конфигурации");
            Finish(handlers, false);
        });
}

void PlaybackConfigurationLoader::LoadPlaybackConfigurationFromApi(Networking::ServerConnection& connection,
                                                                   Handlers handlers)
{
    Logger::Log("Начинаем загрузку конфигурации воспроизведения с сервера");
    connection.GetPlaybackConfiguration(
        [handlers](std::shared_ptr<DataTypes::Playback::PlaybackConfiguration> configuration) {
            if (!configuration) {
                Logger::Log(
                    "\tОшибка получения конфигурации воспроизведения с сервера, вызов обработчика ошибки");
                Fail(handlers, std::make_shared<DataTypes::JsonDeserializationError>(
                                   "Пустая конфигурация воспроизведения"));
                return;
            }
            Logger::Log("\tКонфигурация воспроизведения успешно получена с сервера (версия " +
                        std::to_string(configuration->version) + ")");
            Logger::Log("\tСохранение конфигурации воспроизведения в локальную базу данных");
            if (!DataBase::DbManager::GetInstance().SavePlaybackConfiguration(*configuration)) {
                Logger::Log(
                    "\tОшибка при сохранении конфигурации воспроизведения в локальную базу данных, вызов "
                    "обработчика ошибки");
                Fail(handlers, DataTypes::Error::CreateDataBaseError());
                return;
            }
            Logger::Log("\tКонфигурация воспроизведения успешно сохранена в локальную базу данных");
            Logger::Log("\tПроцесс обновления конфигурации окончен");
            Finish(handlers, true);
        },
        [handlers](std::shared_ptr<DataTypes::NetworkError> error) {
            Logger::Log(
                "\tОшибка получения конфигурации воспроизведения с сервера, вызов обработчика ошибки");
            Fail(handlers, std::move(error));
        });
}

std::string PlaybackConfigurationLoader::UserFacingUpdateTime()
{
    return LocalTimeHelper::GetLocalTimeHoursMinutesString() + " " + LocalTimeHelper::GetLocalDateString();
}

} // namespace Core::Utilities
