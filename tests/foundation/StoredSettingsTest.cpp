#include "foundation/StoredSettings.h"
#include "foundation/FailureTexts.h"

#include "common/NumberedFailure.h"
#include "common/SettingsText.h"
#include "foundation/Mutation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString applicationName = u"Norvane"_s;
const QString sectionName = u"SMS"_s;
const QString keyName = u"QueueFolder"_s;

/// Files whose reading or writing fails as told.
class FailingFiles : public PlatformFiles
{
public:
    Kind kind(const QString &path) const override { return platformFiles().kind(path); }
    int read(const QString &path, qint64 limit, QByteArray &bytes) override
    {
        return readError != 0 ? readError : platformFiles().read(path, limit, bytes);
    }
    int replace(const QString &path, const QByteArray &bytes) override
    {
        return replaceError != 0 ? replaceError : platformFiles().replace(path, bytes);
    }
    int makeFolder(const QString &path, Access access) override
    {
        return folderError != 0 ? folderError : platformFiles().makeFolder(path, access);
    }

    int readError = 0;
    int replaceError = 0;
    int folderError = 0;
};

qint32 numberOf(const std::function<void()> &action)
{
    try {
        action();
    } catch (const NumberedFailure &failure) {
        return failure.number();
    }
    return 0;
}

class StoredSettingsTest : public testing::Test
{
protected:
    StoredSettingsTest() : m_previous(qgetenv("XDG_CONFIG_HOME"))
    {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path() + u"/a/config"_s));
    }
    ~StoredSettingsTest() override { qputenv("XDG_CONFIG_HOME", m_previous); }

    QString folder() const { return m_home.path() + u"/a/config/Norvane"_s; }
    QString path() const { return folder() + u"/settings.ini"_s; }

    QString get(const QString &key = keyName) const
    {
        return m_settings.get(applicationName, sectionName, key, u"default"_s);
    }
    void save(const QString &value, const QString &key = keyName)
    {
        m_settings.save(applicationName, sectionName, key, value);
    }
    qint32 failureOfGet() const
    {
        return numberOf([this] { get(); });
    }
    qint32 failureOfSave()
    {
        return numberOf([this] { save(u"x"_s); });
    }

    /// Writes the file as an editor or another program would.
    void write(const QByteArray &bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(folder()));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray written() const
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    QByteArray m_previous;
    QTemporaryDir m_home;
    FailingFiles m_files;
    IniStoredSettings m_settings{m_files, std::chrono::milliseconds(50)};
};

TEST_F(StoredSettingsTest, keyThatWasNeverStoredGivesTheDefaultAndWritesNothing)
{
    EXPECT_EQ(get(), u"default"_s);
    EXPECT_FALSE(QFileInfo::exists(m_home.path() + u"/a"_s));
}

TEST_F(StoredSettingsTest, savedValueIsReadBackAndStandsAsTold)
{
    save(u"True"_s, u"ServerMode"_s);
    save(u"/srv/queue"_s);
    EXPECT_EQ(get(u"ServerMode"_s), u"True"_s);
    EXPECT_EQ(get(), u"/srv/queue"_s);
    EXPECT_EQ(written(), "[SMS]\nServerMode=True\nQueueFolder=/srv/queue\n");
    save(u"False"_s, u"ServerMode"_s);
    EXPECT_EQ(written(), "[SMS]\nServerMode=False\nQueueFolder=/srv/queue\n");
}

TEST_F(StoredSettingsTest, foldersAndFileAreForTheirOwnerAlone)
{
    save(u"x"_s);
    for (const auto &[name, mode] : QList<std::pair<QString, mode_t>>{
             {m_home.path() + u"/a"_s, 0700}, {folder(), 0700}, {path(), 0600}}) {
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(name).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, mode) << name.toStdString();
    }
    // Nothing else is left, neither a lock nor a half-written file.
    EXPECT_EQ(QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{u"settings.ini"_s});
}

TEST_F(StoredSettingsTest, whatAnotherProcessWritesIsSeenAtOnceAndLeftAlone)
{
    save(u"one"_s);
    EXPECT_EQ(get(), u"one"_s);
    // The same length in the same instant: neither size nor time tells of the change.
    write("[SMS]\nQueueFolder=two\n");
    EXPECT_EQ(get(), u"two"_s);

    ASSERT_EQ(QProcess::execute(u"/bin/sh"_s, {u"-c"_s, u"echo Other=3 >> \"$0\""_s, path()}), 0);
    EXPECT_EQ(get(u"Other"_s), u"3"_s);
    save(u"four"_s);
    EXPECT_EQ(get(u"Other"_s), u"3"_s);
    EXPECT_EQ(get(), u"four"_s);
}

TEST_F(StoredSettingsTest, applicationsSectionsAndKeysAreApart)
{
    save(u"1"_s);
    m_settings.save(applicationName, u"Other section"_s, keyName, u"2"_s);
    m_settings.save(u"Other"_s, sectionName, keyName, u"3"_s);
    m_settings.save(applicationName, sectionName, u"Más =;["_s, u"4"_s);
    EXPECT_EQ(get(), u"1"_s);
    EXPECT_EQ(m_settings.get(applicationName, u"Other section"_s, keyName, {}), u"2"_s);
    EXPECT_EQ(m_settings.get(u"Other"_s, sectionName, keyName, {}), u"3"_s);
    EXPECT_EQ(get(u"Más =;["_s), u"4"_s);
}

TEST_F(StoredSettingsTest, everyTextSurvives)
{
    int copies = 0;
    for (const QString &text :
         {u""_s, u" blanks "_s, u"C:\\new\\temp"_s, u"\\\\server\\share"_s, u"a, b,c;d=e"_s,
          u"\"quoted\""_s, u"\"open"_s, u"ñandú €😀"_s, u"@Variant(x)"_s, u"@@x"_s,
          u"@ByteArray(a)"_s, u"a\r\nb\tc"_s,
          u"\x01"
          u"2\x1F"
          u"ff"_s,
          u"[SMS]"_s, u"#x"_s, u"%20"_s, u"a\\"_s, QString(u"a"_s) + QChar(QChar::Null) + u'b'}) {
        save(text);
        EXPECT_EQ(get(), text) << written().toStdString();
        // Under a name of its own: the toolkit's cache doesn't notice quick changes of one file.
        const QString copy = m_home.filePath(QString::number(++copies));
        ASSERT_TRUE(QFile::copy(path(), copy));
        const QSettings other(copy, QSettings::IniFormat);
        EXPECT_EQ(other.value(u"SMS/QueueFolder"_s).toString(), text) << written().toStdString();
    }
}

TEST_F(StoredSettingsTest, valuesEditedByHandComeBackAsText)
{
    const QList<std::pair<QByteArray, QString>> values{
        {"/srv/a, b,c", u"/srv/a, b,c"_s},
        {"C:\\new\\temp", u"C:\\new\\temp"_s},
        {"\\\\server\\share", u"\\\\server\\share"_s},
        {"  /srv/x  ", u"/srv/x"_s},
        {"/srv/dato\xC3\xB1s", u"/srv/datoñs"_s},
        {"@Variant(\\0\\0)", u"@Variant(\\0\\0)"_s},
        {"@Invalid()", u"@Invalid()"_s},
        {"\" a, b \"", u" a, b "_s},
        {"\"a\\\\b\"", u"a\\b"_s},
        {"a=b", u"a=b"_s},
        {"a ; b", u"a ; b"_s},
        {"\"", u"\""_s},
        {"", u""_s},
    };
    for (const auto &[raw, text] : values) {
        write("[SMS]\nQueueFolder=" + raw + "\n");
        EXPECT_EQ(get(), text) << raw.toStdString();
    }
}

TEST_F(StoredSettingsTest, whatIsNotChangedStaysAsItWas)
{
    write("; of mine\r\n[Other]\nQueueFolder=o\n\n[SMS]\n# more\n QueueFolder = a \n\n[Last]\nx=1");
    save(u"b"_s);
    save(u"False"_s, u"ServerMode"_s);
    EXPECT_EQ(written(), "; of mine\n[Other]\nQueueFolder=o\n\n[SMS]\n# more\nQueueFolder=b\n"
                         "ServerMode=False\n\n[Last]\nx=1\n");
}

TEST_F(StoredSettingsTest, lastOfTwoKeysIsTheOneReadAndChanged)
{
    write("[SMS]\nQueueFolder=a\n[Other]\n[SMS]\nQueueFolder=b\n");
    EXPECT_EQ(get(), u"b"_s);
    save(u"c"_s);
    EXPECT_EQ(get(), u"c"_s);
}

TEST_F(StoredSettingsTest, unreadableFileIsAFailureAndIsNotOverwritten)
{
    for (const QByteArray &bytes :
         {QByteArray("\x7F"
                     "ELF\0\1\2",
                     7),
          QByteArray("[SMS]\nno value\n"), QByteArray("[SMS]\nQueueFolder=\xFF\n"),
          QByteArray("[SMS]\nx=a\0b\n", 12), QByteArray("[SMS\nx=1\n").replace("=1", "")}) {
        write(bytes);
        EXPECT_EQ(failureOfGet(), 75) << bytes.toStdString();
        EXPECT_EQ(failureOfSave(), 75) << bytes.toStdString();
        EXPECT_EQ(written(), bytes);
    }
}

TEST_F(StoredSettingsTest, aFailureNamesTheFile)
{
    const auto textOf = [](auto &&call) {
        try {
            call();
        } catch (const NumberedFailure &failure) {
            return failure.shown();
        }
        return QString();
    };
    write("no settings");
    EXPECT_EQ(textOf([this] { get(); }), FailureText::settingsDamaged(path()) + u" - 75"_s);
    m_files.readError = EACCES;
    EXPECT_EQ(textOf([this] { get(); }), FailureText::settingsUnreadable(path()) + u" - 70"_s);
    m_files.readError = 0;
    write("");
    m_files.replaceError = ENOSPC;
    EXPECT_EQ(textOf([this] { save(u"x"_s); }), FailureText::settingsNotSaved(path()) + u" - 61"_s);
    m_files.replaceError = 0;
    {
        QLockFile lock(path() + u".lock"_s);
        ASSERT_TRUE(lock.tryLock());
        EXPECT_EQ(textOf([this] { save(u"x"_s); }),
                  FailureText::settingsNotSaved(path()) + u" - 70"_s);
    }
    m_files.folderError = EIO;
    EXPECT_EQ(textOf([this] { save(u"x"_s); }),
              FailureText::settingsNotSaved(folder()) + u" - 57"_s);
    m_files.folderError = ENOENT;
    EXPECT_EQ(textOf([this] { save(u"x"_s); }),
              FailureText::settingsNotSaved(folder()) + u" - 76"_s);
}

TEST_F(StoredSettingsTest, fileOverAMebibyteIsAFailure)
{
    const QByteArray start = "[SMS]\nQueueFolder=x\n";
    write(start + QByteArray(1024 * 1024 - start.size(), '\n'));
    EXPECT_EQ(get(), u"x"_s);
    write(start + QByteArray(1024 * 1024 - start.size() + 1, '\n'));
    EXPECT_EQ(failureOfGet(), 75);
    EXPECT_EQ(failureOfSave(), 75);
}

TEST_F(StoredSettingsTest, folderOrPipeInPlaceOfTheFileIsAFailure)
{
    ASSERT_TRUE(QDir().mkpath(path()));
    EXPECT_EQ(failureOfGet(), 75);
    EXPECT_EQ(failureOfSave(), 75);
    ASSERT_TRUE(QDir().rmdir(path()));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    EXPECT_EQ(failureOfGet(), 75);
    EXPECT_EQ(failureOfSave(), 75);
}

TEST_F(StoredSettingsTest, fileInPlaceOfAFolderIsAFailure)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(folder()).path()));
    QFile file(folder());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(failureOfGet(), 76);
    EXPECT_EQ(failureOfSave(), 76);
}

TEST_F(StoredSettingsTest, platformErrorDecidesTheNumber)
{
    const QList<std::pair<int, qint32>> errors{
        {EACCES, 70}, {EIO, 57}, {EROFS, 70}, {ENOSPC, 61}, {EMFILE, 67}};
    save(u"old"_s);
    for (const auto &[error, number] : errors) {
        m_files.readError = error;
        EXPECT_EQ(failureOfGet(), number) << error;
        EXPECT_EQ(failureOfSave(), number) << error;
        m_files.readError = 0;

        m_files.replaceError = error;
        EXPECT_EQ(failureOfSave(), number) << error;
        EXPECT_EQ(get(), u"old"_s);
        m_files.replaceError = 0;

        m_files.folderError = error;
        EXPECT_EQ(failureOfSave(), number) << error;
        m_files.folderError = 0;
    }
}

TEST_F(StoredSettingsTest, fileThatAnotherProcessKeepsLockedIsAFailure)
{
    save(u"old"_s);
    QLockFile other(path() + u".lock"_s);
    ASSERT_TRUE(other.tryLock(0));
    EXPECT_EQ(failureOfSave(), 70);
    EXPECT_EQ(get(), u"old"_s);
    other.unlock();
    save(u"new"_s);
    EXPECT_EQ(get(), u"new"_s);
}

TEST_F(StoredSettingsTest, nameThatCannotBeIsAFailure)
{
    const QString loneSurrogate(QChar(0xD800));
    const auto failure = [this](const QString &application, const QString &section,
                                const QString &key, const QString &value) {
        return numberOf([&] { m_settings.save(application, section, key, value); });
    };
    EXPECT_EQ(failure({}, sectionName, keyName, {}), 5);
    EXPECT_EQ(failure(u".."_s, sectionName, keyName, {}), 5);
    EXPECT_EQ(failure(u"a/b"_s, sectionName, keyName, {}), 5);
    EXPECT_EQ(failure(applicationName, {}, keyName, {}), 5);
    EXPECT_EQ(failure(applicationName, sectionName, {}, {}), 5);
    EXPECT_EQ(failure(applicationName, sectionName, keyName, loneSurrogate), 5);
    EXPECT_EQ(numberOf([&] { m_settings.get(applicationName, sectionName, {}, {}); }), 5);
}

TEST(SettingsTextTest, damagedTextsAreReadOrTurnedDownAndReadTheirOwnOutput)
{
    const QByteArray good = "; x\n[Other]\nQueueFolder=o\n\n[SMS]\nServerMode=True\n"
                            "QueueFolder=\"/srv/a\\\\b, \\x1f\\n\xC3\xB1\"\n";
    Mutation mutation(22);
    int read = 0;
    constexpr int rounds = 3000;
    for (int i = 0; i < rounds; ++i) {
        auto text = SettingsText::parse(mutation.of(good));
        if (!text)
            continue;
        ++read;
        const QString value = text->value(sectionName, keyName).value_or(u"none"_s);
        text->setValue(sectionName, keyName, value);
        const auto again = SettingsText::parse(text->bytes());
        ASSERT_TRUE(again);
        if (value.isValidUtf16()) {
            EXPECT_EQ(again->value(sectionName, keyName), value) << text->bytes().toStdString();
        }
    }
    EXPECT_GT(read, 0);
    EXPECT_LT(read, rounds);
}

} // namespace

} // namespace norvane
