#include "gsm-simulator/MessageLog.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace simulator {

namespace {

const QDateTime Noon(QDate(2026, 3, 9), QTime(12, 0, 1, 23));

AcceptedMessage message(const QString &text)
{
    AcceptedMessage accepted;
    accepted.part.number = QStringLiteral("+34600111222");
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
    EXPECT_EQ(jsonLine(message(QStringLiteral("Olá")), Noon),
              "{\"number\":\"+34600111222\",\"text\":\"Olá\",\"pdu\":\"0001\","
              "\"time\":\"2026-03-09T12:00:01.023\",\"coding\":\"gsm7\",\"reference\":7}\n");
}

TEST(MessageLog, aLineTellsThatTheLinkWasKept)
{
    AcceptedMessage accepted = message(QStringLiteral("x"));
    const QString member = QStringLiteral("linkKept");
    EXPECT_FALSE(parsed(jsonLine(accepted, Noon)).contains(member));
    accepted.linkKept = true;
    EXPECT_TRUE(parsed(jsonLine(accepted, Noon)).value(member).toBool());
}

TEST(MessageLog, aPartOfMoreTellsItsPlace)
{
    AcceptedMessage accepted = message(QStringLiteral("x"));
    accepted.part.coding = Coding::Ucs2;
    accepted.part.concatenation = Concatenation{4711, 2, 3};
    const QJsonObject object = parsed(jsonLine(accepted, Noon));
    EXPECT_EQ(object.value(QStringLiteral("concatenation")).toInt(), 4711);
    EXPECT_EQ(object.value(QStringLiteral("part")).toInt(), 2);
    EXPECT_EQ(object.value(QStringLiteral("parts")).toInt(), 3);
    EXPECT_EQ(object.value(QStringLiteral("coding")).toString(), QStringLiteral("ucs2"));
    accepted.part.coding = Coding::Octets;
    EXPECT_EQ(parsed(jsonLine(accepted, Noon)).value(QStringLiteral("coding")).toString(),
              QStringLiteral("8bit"));
}

TEST(MessageLog, everyTextStaysOneLineAndComesBack)
{
    for (const QString &text :
         {QString(), QStringLiteral("a\"b\\c"), QStringLiteral("one\r\ntwo\tthree\f"),
          QStringLiteral("€ Ж \U0001F600"), QString(QChar(0)), QStringLiteral("\u2028\u007F")}) {
        const QByteArray line = jsonLine(message(text), Noon);
        EXPECT_EQ(line.count('\n'), 1);
        EXPECT_EQ(parsed(line).value(QStringLiteral("text")).toString(), text);
    }
}

TEST(MessageLog, halvesOfAPairThatPartsDivideComeTogetherAgain)
{
    const QString pair = QStringLiteral("\U0001F600");
    QString joined;
    for (const QChar half : pair) {
        const QByteArray line = jsonLine(message(QStringLiteral("a") + half), Noon);
        EXPECT_TRUE(line.contains("\"text\":\"a\\ud")) << line.data();
        joined += QStringLiteral("\\u") + QString::number(half.unicode(), 16);
    }
    EXPECT_EQ(parsed("{\"x\":\"" + joined.toLatin1() + "\"}").value(QStringLiteral("x")).toString(),
              pair);
}

TEST(MessageLog, linesAreAppendedToWhatIsThere)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("log"));
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
    EXPECT_TRUE(
        missing.open(QStringLiteral("/nowhere/log")).contains(QStringLiteral("/nowhere/log")));
    MessageLog full;
    EXPECT_EQ(full.open(QStringLiteral("/dev/full")), QString());
    EXPECT_TRUE(full.append("line\n").contains(QStringLiteral("/dev/full")));
}

} // namespace simulator
