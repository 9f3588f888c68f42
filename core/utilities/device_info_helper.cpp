#include "core/utilities/device_info_helper.h"

#include <QString>
#include <QSysInfo>
#include <QtGlobal>

#include <utility>

namespace Core::Utilities {

std::string DeviceInfoHelper::GetPlatformInfo()
{
    const std::pair<const char*, QString> lines[] = {
        {"buildAbi: ", QSysInfo::buildAbi()},
        {"currentCpuArch: ", QSysInfo::currentCpuArchitecture()},
        {"kernelType: ", QSysInfo::kernelType()},
        {"kernalVersion: ", QSysInfo::kernelVersion()},
        {"prettyProductName: ", QSysInfo::prettyProductName()},
        {"productType: ", QSysInfo::productType()},
        {"productVersion: ", QSysInfo::productVersion()},
    };
    std::string info;
    for (const auto& [label, value] : lines) {
        // The values come from files such as /etc/os-release; a stray line break
        // would shift every label after it.
        QString singleLine = value;
        singleLine.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\r'), QLatin1Char(' '));
        info += label;
        info += singleLine.toStdString();
        info += '\n';
    }
    return info;
}

std::string DeviceInfoHelper::GetOsInfo()
{
#if defined(Q_OS_MACOS)
    return "macOS";
#elif defined(Q_OS_WIN)
    return "Windows";
#elif defined(Q_OS_LINUX)
    return "Linux";
#else
    return QSysInfo::kernelType().toStdString();
#endif
}

} // namespace Core::Utilities
