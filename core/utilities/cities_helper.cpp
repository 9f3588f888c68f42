#include "core/utilities/cities_helper.h"

#include "core/utilities/core_resources.h"

#include <QFile>
#include <QTextStream>

namespace Core::Utilities {

CitiesHelper& CitiesHelper::GetInstance()
{
    // Never destroyed: screens may still ask while the application shuts down.
    static CitiesHelper* const instance = new CitiesHelper();
    return *instance;
}

CitiesHelper::CitiesHelper()
{
    CoreResources::Initialize();
    QFile file(QStringLiteral(":/raw/cities.txt"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        // Sign-up still works; the user types the whole name.
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    QString line;
    while (stream.readLineInto(&line)) {
        const QString name = line.trimmed();
        if (!name.isEmpty()) {
            m_cities.push_back({name.toStdString(), name.toLower()});
        }
    }
}

std::vector<std::string> CitiesHelper::SuitableCities(std::string text) const
{
    std::vector<std::string> result;
    if (text.empty()) {
        return result;
    }
    const QString prefix = QString::fromStdString(text).toLower();
    for (const City& city : m_cities) {
        if (city.lowerCaseName.startsWith(prefix)) {
            result.push_back(city.name);
        }
    }
    return result;
}

} // namespace Core::Utilities
