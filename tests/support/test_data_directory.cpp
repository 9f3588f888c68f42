#include "tests/support/test_data_directory.h"

#include "core/utilities/data_directory.h"

namespace Tests {

TestDataDirectory::TestDataDirectory()
    : previousValue(qgetenv(Core::Utilities::DataDirectory::EnvironmentVariable))
    , hadPreviousValue(qEnvironmentVariableIsSet(Core::Utilities::DataDirectory::EnvironmentVariable))
{
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, directory.path().toLocal8Bit());
}

TestDataDirectory::~TestDataDirectory()
{
    if (hadPreviousValue) {
        qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, previousValue);
    } else {
        qunsetenv(Core::Utilities::DataDirectory::EnvironmentVariable);
    }
}

bool TestDataDirectory::IsValid() const
{
    return directory.isValid();
}

QString TestDataDirectory::Path() const
{
    return directory.path();
}

QString TestDataDirectory::FilePath(const QString& name) const
{
    return directory.filePath(name);
}

} // namespace Tests
