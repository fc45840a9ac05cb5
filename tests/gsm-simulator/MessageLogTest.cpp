#include "gsm-simulator/MessageLog.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const QDateTime Noon(QDate(2026, 3, 9), QTime(12, 0, 1, 23));

AcceptedMessage message(const QString &text)
{
    AcceptedMessage accepted;
    accepted.part.number = u"+34600111222"_s;
    accepted.part.text = text;
    accepted.part.pdu = "0001";
    accepted.reference = 7;
    return accepted;
}

QJsonObject parsed(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

} // namespace

TEST(MessageLog, aLineTellsThePart)
{
    EXPECT_EQ(jsonLine(message(u"Olá"_s), Noon),
              "{\"number\":\"+34600111222\",\"text\":\"Olá\",\"pdu\":\"0001\","
              "\"time\":\"2026-03-09T12:00:01.023\",\"coding\":\"gsm7\",\"reference\":7}\n");
}

TEST(MessageLog, aLineTellsThatTheLinkWasKept)
{
    AcceptedMessage accepted = message(u"x"_s);
    const QString member = u"linkKept"_s;
    EXPECT_FALSE(parsed(jsonLine(accepted, Noon)).contains(member));
    accepted.linkKept = true;
    EXPECT_TRUE(parsed(jsonLine(accepted, Noon)).value(member).toBool());
}

TEST(MessageLog, aPartOfMoreTellsItsPlace)
{
    AcceptedMessage accepted = message(u"x"_s);
    accepted.part.coding = Coding::Ucs2;
    accepted.part.concatenation = Concatenation{4711, 2, 3};
    const QJsonObject object = parsed(jsonLine(accepted, Noon));
    EXPECT_EQ(object.value(u"concatenation"_s).toInt(), 4711);
    EXPECT_EQ(object.value(u"part"_s).toInt(), 2);
    EXPECT_EQ(object.value(u"parts"_s).toInt(), 3);
    EXPECT_EQ(object.value(u"coding"_s).toString(), u"ucs2"_s);
    accepted.part.coding = Coding::Octets;
    EXPECT_EQ(parsed(jsonLine(accepted, Noon)).value(u"coding"_s).toString(), u"8bit"_s);
}

TEST(MessageLog, everyTextStaysOneLineAndComesBack)
{
    for (const QString &text : {QString(), u"a\"b\\c"_s, u"one\r\ntwo\tthree\f"_s,
                                u"€ Ж \U0001F600"_s, QString(QChar(0)), u"\u2028\u007F"_s}) {
        const QByteArray line = jsonLine(message(text), Noon);
        EXPECT_EQ(line.count('\n'), 1);
        EXPECT_EQ(parsed(line).value(u"text"_s).toString(), text);
    }
}

TEST(MessageLog, halvesOfAPairThatPartsDivideComeTogetherAgain)
{
    const QString pair = u"\U0001F600"_s;
    QString joined;
    for (const QChar half : pair) {
        const QByteArray line = jsonLine(message(u"a"_s + half), Noon);
        EXPECT_TRUE(line.contains("\"text\":\"a\\ud")) << line.data();
        joined += u"\\u"_s + QString::number(half.unicode(), 16);
    }
    EXPECT_EQ(parsed("{\"x\":\"" + joined.toLatin1() + "\"}").value(u"x"_s).toString(), pair);
}

TEST(MessageLog, linesAreAppendedToWhatIsThere)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"log"_s);
    for (const char *line : {"one\n", "two\n"}) {
        MessageLog log;
        EXPECT_EQ(log.open(path), QString());
        EXPECT_EQ(log.append(line), QString());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_TRUE(file.readAll().endsWith(line));
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "one\ntwo\n");
    EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
}

TEST(MessageLog, failuresAreTold)
{
    MessageLog missing;
    EXPECT_TRUE(missing.open(u"/nowhere/log"_s).contains(u"/nowhere/log"_s));
    MessageLog full;
    EXPECT_EQ(full.open(u"/dev/full"_s), QString());
    EXPECT_TRUE(full.append("line\n").contains(u"/dev/full"_s));
}

} // namespace simulator

} // namespace norvane
