#pragma once

#include "NorvaneSMS/app/mode/MadeUpPlatform.h"
#include "foundation/PlatformHelpers.h"
#include "support/RecordingMessageBoxes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

/// A program folder of its own, a made-up Spanish system, and message boxes that keep what they
/// show. The globals are released behind each test.
class AppFixture : public ::testing::Test
{
protected:
    AppFixture();
    ~AppFixture() override;

    /// Puts the console's own file of the language `code` beside the program.
    void installLanguage(const QString &code) const;
    void writeLanguageFile(const QString &code, const QByteArray &bytes) const;

    /// A language file in proper form that has no rows.
    static QByteArray fileWithoutRows();

    MadeUpPlatform platform;
    PlatformHelpers helpers{platform};
    RecordingMessageBoxes boxes;

private:
    QTemporaryDir m_folder;
};

} // namespace norvane
