#pragma once

#include <QString>

namespace Tests {

// The media made by the media fixture (tests/fixtures/make-test-media). A test that
// uses them declares NEEDS media; without the fixture Path() fails the test with a
// clear message instead of skipping it.
class TestMedia
{
public:
    TestMedia() = delete;

    static constexpr int MusicAFrequency = 440;
    static constexpr int MusicBFrequency = 660;
    static constexpr int MusicCFrequency = 990;
    static constexpr int AdFrequency = 1500;
    static constexpr int VideoFrequency = 550;
    static constexpr int MusicSeconds = 8;
    static constexpr int AdSeconds = 3;
    static constexpr int VideoSeconds = 5;

    // Directory of the generated files, or empty when the fixture did not run.
    static QString Directory();
    // Absolute path of a generated file such as "music_a.mp3"; empty (and a
    // warning naming the cause) when the fixture did not run or the file is missing.
    static QString Path(const QString& name);
};

} // namespace Tests
