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

namespace {

const QString Application = u"Norvane"_qs;
const QString Section = u"SMS"_qs;
const QString Key = u"QueueFolder"_qs;

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
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.path() + u"/a/config"_qs));
    }
    ~StoredSettingsTest() override { qputenv("XDG_CONFIG_HOME", m_previous); }

    QString folder() const { return m_home.path() + u"/a/config/Norvane"_qs; }
    QString path() const { return folder() + u"/settings.ini"_qs; }

    QString get(const QString &key = Key) const
    {
        return m_settings.get(Application, Section, key, u"default"_qs);
    }
    void save(const QString &value, const QString &key = Key)
    {
        m_settings.save(Application, Section, key, value);
    }
    qint32 failureOfGet() const
    {
        return numberOf([this] { get(); });
    }
    qint32 failureOfSave()
    {
        return numberOf([this] { save(u"x"_qs); });
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
    EXPECT_EQ(get(), u"default"_qs);
    EXPECT_FALSE(QFileInfo::exists(m_home.path() + u"/a"_qs));
}

TEST_F(StoredSettingsTest, savedValueIsReadBackAndStandsAsTold)
{
    save(u"True"_qs, u"ServerMode"_qs);
    save(u"/srv/queue"_qs);
    EXPECT_EQ(get(u"ServerMode"_qs), u"True"_qs);
    EXPECT_EQ(get(), u"/srv/queue"_qs);
    EXPECT_EQ(written(), "[SMS]\nServerMode=True\nQueueFolder=/srv/queue\n");
    save(u"False"_qs, u"ServerMode"_qs);
    EXPECT_EQ(written(), "[SMS]\nServerMode=False\nQueueFolder=/srv/queue\n");
}

TEST_F(StoredSettingsTest, foldersAndFileAreForTheirOwnerAlone)
{
    save(u"x"_qs);
    for (const auto &[name, mode] : QList<std::pair<QString, mode_t>>{
             {m_home.path() + u"/a"_qs, 0700}, {folder(), 0700}, {path(), 0600}}) {
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(name).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, mode) << name.toStdString();
    }
    // Nothing else is left, neither a lock nor a half-written file.
    EXPECT_EQ(QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{u"settings.ini"_qs});
}

TEST_F(StoredSettingsTest, whatAnotherProcessWritesIsSeenAtOnceAndLeftAlone)
{
    save(u"one"_qs);
    EXPECT_EQ(get(), u"one"_qs);
    // The same length in the same instant: neither size nor time tells of the change.
    write("[SMS]\nQueueFolder=two\n");
    EXPECT_EQ(get(), u"two"_qs);

    ASSERT_EQ(QProcess::execute(u"/bin/sh"_qs, {u"-c"_qs, u"echo Other=3 >> \"$0\""_qs, path()}),
              0);
    EXPECT_EQ(get(u"Other"_qs), u"3"_qs);
    save(u"four"_qs);
    EXPECT_EQ(get(u"Other"_qs), u"3"_qs);
    EXPECT_EQ(get(), u"four"_qs);
}

TEST_F(StoredSettingsTest, applicationsSectionsAndKeysAreApart)
{
    save(u"1"_qs);
    m_settings.save(Application, u"Other section"_qs, Key, u"2"_qs);
    m_settings.save(u"Other"_qs, Section, Key, u"3"_qs);
    m_settings.save(Application, Section, u"Más =;["_qs, u"4"_qs);
    EXPECT_EQ(get(), u"1"_qs);
    EXPECT_EQ(m_settings.get(Application, u"Other section"_qs, Key, {}), u"2"_qs);
    EXPECT_EQ(m_settings.get(u"Other"_qs, Section, Key, {}), u"3"_qs);
    EXPECT_EQ(get(u"Más =;["_qs), u"4"_qs);
}

TEST_F(StoredSettingsTest, everyTextSurvives)
{
    int copies = 0;
    for (const QString &text :
         {u""_qs, u" blanks "_qs, u"C:\\new\\temp"_qs, u"\\\\server\\share"_qs, u"a, b,c;d=e"_qs,
          u"\"quoted\""_qs, u"\"open"_qs, u"ñandú €😀"_qs, u"@Variant(x)"_qs, u"@@x"_qs,
          u"@ByteArray(a)"_qs, u"a\r\nb\tc"_qs,
          u"\x01"
          u"2\x1F"
          u"ff"_qs,
          u"[SMS]"_qs, u"#x"_qs, u"%20"_qs, u"a\\"_qs,
          QString(u"a"_qs) + QChar(QChar::Null) + u'b'}) {
        save(text);
        EXPECT_EQ(get(), text) << written().toStdString();
        // Under a name of its own: the toolkit's cache doesn't notice quick changes of one file.
        const QString copy = m_home.filePath(QString::number(++copies));
        ASSERT_TRUE(QFile::copy(path(), copy));
        const QSettings other(copy, QSettings::IniFormat);
        EXPECT_EQ(other.value(u"SMS/QueueFolder"_qs).toString(), text) << written().toStdString();
    }
}

TEST_F(StoredSettingsTest, valuesEditedByHandComeBackAsText)
{
    const QList<std::pair<QByteArray, QString>> values{
        {"/srv/a, b,c", u"/srv/a, b,c"_qs},
        {"C:\\new\\temp", u"C:\\new\\temp"_qs},
        {"\\\\server\\share", u"\\\\server\\share"_qs},
        {"  /srv/x  ", u"/srv/x"_qs},
        {"/srv/dato\xC3\xB1s", u"/srv/datoñs"_qs},
        {"@Variant(\\0\\0)", u"@Variant(\\0\\0)"_qs},
        {"@Invalid()", u"@Invalid()"_qs},
        {"\" a, b \"", u" a, b "_qs},
        {"\"a\\\\b\"", u"a\\b"_qs},
        {"a=b", u"a=b"_qs},
        {"a ; b", u"a ; b"_qs},
        {"\"", u"\""_qs},
        {"", u""_qs},
    };
    for (const auto &[raw, text] : values) {
        write("[SMS]\nQueueFolder=" + raw + "\n");
        EXPECT_EQ(get(), text) << raw.toStdString();
    }
}

TEST_F(StoredSettingsTest, whatIsNotChangedStaysAsItWas)
{
    write("; of mine\r\n[Other]\nQueueFolder=o\n\n[SMS]\n# more\n QueueFolder = a \n\n[Last]\nx=1");
    save(u"b"_qs);
    save(u"False"_qs, u"ServerMode"_qs);
    EXPECT_EQ(written(), "; of mine\n[Other]\nQueueFolder=o\n\n[SMS]\n# more\nQueueFolder=b\n"
                         "ServerMode=False\n\n[Last]\nx=1\n");
}

TEST_F(StoredSettingsTest, lastOfTwoKeysIsTheOneReadAndChanged)
{
    write("[SMS]\nQueueFolder=a\n[Other]\n[SMS]\nQueueFolder=b\n");
    EXPECT_EQ(get(), u"b"_qs);
    save(u"c"_qs);
    EXPECT_EQ(get(), u"c"_qs);
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
    EXPECT_EQ(textOf([this] { get(); }), FailureText::settingsDamaged(path()) + u" - 75"_qs);
    m_files.readError = EACCES;
    EXPECT_EQ(textOf([this] { get(); }), FailureText::settingsUnreadable(path()) + u" - 70"_qs);
    m_files.readError = 0;
    write("");
    m_files.replaceError = ENOSPC;
    EXPECT_EQ(textOf([this] { save(u"x"_qs); }),
              FailureText::settingsNotSaved(path()) + u" - 61"_qs);
    m_files.replaceError = 0;
    {
        QLockFile lock(path() + u".lock"_qs);
        ASSERT_TRUE(lock.tryLock());
        EXPECT_EQ(textOf([this] { save(u"x"_qs); }),
                  FailureText::settingsNotSaved(path()) + u" - 70"_qs);
    }
    m_files.folderError = EIO;
    EXPECT_EQ(textOf([this] { save(u"x"_qs); }),
              FailureText::settingsNotSaved(folder()) + u" - 57"_qs);
    m_files.folderError = ENOENT;
    EXPECT_EQ(textOf([this] { save(u"x"_qs); }),
              FailureText::settingsNotSaved(folder()) + u" - 76"_qs);
}

TEST_F(StoredSettingsTest, fileOverAMebibyteIsAFailure)
{
    const QByteArray start = "[SMS]\nQueueFolder=x\n";
    write(start + QByteArray(1024 * 1024 - start.size(), '\n'));
    EXPECT_EQ(get(), u"x"_qs);
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
    save(u"old"_qs);
    for (const auto &[error, number] : errors) {
        m_files.readError = error;
        EXPECT_EQ(failureOfGet(), number) << error;
        EXPECT_EQ(failureOfSave(), number) << error;
        m_files.readError = 0;

        m_files.replaceError = error;
        EXPECT_EQ(failureOfSave(), number) << error;
        EXPECT_EQ(get(), u"old"_qs);
        m_files.replaceError = 0;

        m_files.folderError = error;
        EXPECT_EQ(failureOfSave(), number) << error;
        m_files.folderError = 0;
    }
}

TEST_F(StoredSettingsTest, fileThatAnotherProcessKeepsLockedIsAFailure)
{
    save(u"old"_qs);
    QLockFile other(path() + u".lock"_qs);
    ASSERT_TRUE(other.tryLock(0));
    EXPECT_EQ(failureOfSave(), 70);
    EXPECT_EQ(get(), u"old"_qs);
    other.unlock();
    save(u"new"_qs);
    EXPECT_EQ(get(), u"new"_qs);
}

TEST_F(StoredSettingsTest, nameThatCannotBeIsAFailure)
{
    const QString loneSurrogate(QChar(0xD800));
    const auto failure = [this](const QString &application, const QString &section,
                                const QString &key, const QString &value) {
        return numberOf([&] { m_settings.save(application, section, key, value); });
    };
    EXPECT_EQ(failure({}, Section, Key, {}), 5);
    EXPECT_EQ(failure(u".."_qs, Section, Key, {}), 5);
    EXPECT_EQ(failure(u"a/b"_qs, Section, Key, {}), 5);
    EXPECT_EQ(failure(Application, {}, Key, {}), 5);
    EXPECT_EQ(failure(Application, Section, {}, {}), 5);
    EXPECT_EQ(failure(Application, Section, Key, loneSurrogate), 5);
    EXPECT_EQ(numberOf([&] { m_settings.get(Application, Section, {}, {}); }), 5);
}

TEST(SettingsTextTest, damagedTextsAreReadOrTurnedDownAndReadTheirOwnOutput)
{
    const QByteArray good = "; x\n[Other]\nQueueFolder=o\n\n[SMS]\nServerMode=True\n"
                            "QueueFolder=\"/srv/a\\\\b, \\x1f\\n\xC3\xB1\"\n";
    Mutation mutation(22);
    int read = 0;
    constexpr int Rounds = 3000;
    for (int i = 0; i < Rounds; ++i) {
        auto text = SettingsText::parse(mutation.of(good));
        if (!text)
            continue;
        ++read;
        const QString value = text->value(Section, Key).value_or(u"none"_qs);
        text->setValue(Section, Key, value);
        const auto again = SettingsText::parse(text->bytes());
        ASSERT_TRUE(again);
        if (value.isValidUtf16()) {
            EXPECT_EQ(again->value(Section, Key), value) << text->bytes().toStdString();
        }
    }
    EXPECT_GT(read, 0);
    EXPECT_LT(read, Rounds);
}

} // namespace
