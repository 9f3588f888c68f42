#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace Tests {

// A fresh, empty data directory for one test case: the player's database,
// settings, log and cache go there, and it is removed afterwards. The previous
// override is restored on destruction.
class TestDataDirectory
{
public:
    TestDataDirectory();
    ~TestDataDirectory();

    TestDataDirectory(const TestDataDirectory&) = delete;
    TestDataDirectory& operator=(const TestDataDirectory&) = delete;

    bool IsValid() const;
    QString Path() const;
    QString FilePath(const QString& name) const;

private:
    QTemporaryDir directory;
    QByteArray previousValue;
    bool hadPreviousValue = false;
};

} // namespace Tests
