#include "TovekSMService/admin/InboxReport.h"

#include "TovekSMService/store/StoreReader.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

using ReportLines::Format;

namespace {

ReceivedMessage greeting()
{
    return {3,
            u"2026-05-01T12:00:03"_s,
            u"2026-05-01T12:00:00+02:00"_s,
            u"+34600111222"_s,
            u"Hola"_s,
            false};
}

TEST(InboxReport, aLineHasTheSameFieldsInBothFormats)
{
    EXPECT_EQ(InboxReport::line(greeting(), Format::Text),
              u"2026-05-01T12:00:03\t2026-05-01T12:00:00+02:00\t+34600111222\tHola\tno\n"_s);
    EXPECT_EQ(InboxReport::line(greeting(), Format::Csv),
              u"2026-05-01T12:00:03,2026-05-01T12:00:00+02:00,+34600111222,Hola,no\r\n"_s);
}

TEST(InboxReport, aMessageThatWasReadSaysSo)
{
    ReceivedMessage read = greeting();
    read.isRead = true;
    EXPECT_TRUE(InboxReport::line(read, Format::Text).endsWith(u"\tyes\n"_s));
    EXPECT_TRUE(InboxReport::line(read, Format::Csv).endsWith(u",yes\r\n"_s));
}

TEST(InboxReport, whatASenderWritesIsNeitherAFormulaNorAnotherLine)
{
    ReceivedMessage hostile = greeting();
    hostile.phone = u"@Bank"_s;
    hostile.text = u"=1+1\r\n\"x\"\x1B[2J"_s;
    hostile.sentAt.clear();
    EXPECT_EQ(InboxReport::line(hostile, Format::Csv),
              u"2026-05-01T12:00:03,,'@Bank,\"'=1+1\r\n\"\"x\"\"\x1B[2J\",no\r\n"_s);
    EXPECT_EQ(InboxReport::line(hostile, Format::Text),
              u"2026-05-01T12:00:03\t\t@Bank\t=1+1  \"x\" [2J\tno\n"_s);
}

class InboxReportOfAStore : public StoreFixture
{
protected:
    /// Keeps a message.
    /// @return its id
    qint64 receive(const QString &at, const QString &text)
    {
        return given(m_store->received().addMessage({0, at, {}, u"600"_s, text, false}, {}));
    }

    QString reported(const QString &since, Format format) const
    {
        StoreReader reader(file());
        done(reader.open());
        QString text;
        QTextStream out(&text);
        done(InboxReport::write(reader, since, format, out));
        return text;
    }
};

TEST_F(InboxReportOfAStore, messagesStandInTheirOrderUnderTheirHeadings)
{
    const qint64 first = receive(u"2026-05-01T12:00:00"_s, u"uno"_s);
    receive(u"2026-05-02T12:00:00"_s, u"dos"_s);
    done(m_store->received().markRead({first}));
    EXPECT_EQ(reported({}, Format::Csv), u"at,sent at,phone,message,read\r\n"
                                         "2026-05-01T12:00:00,,600,uno,yes\r\n"
                                         "2026-05-02T12:00:00,,600,dos,no\r\n"_s);
    EXPECT_EQ(reported({}, Format::Text), u"2026-05-01T12:00:00\t\t600\tuno\tyes\n"
                                          "2026-05-02T12:00:00\t\t600\tdos\tno\n"_s);
}

TEST_F(InboxReportOfAStore, itBeginsWhereItIsTold)
{
    receive(u"2026-05-01T12:00:00"_s, u"uno"_s);
    receive(u"2026-05-02T12:00:00"_s, u"dos"_s);
    const QString second = u"2026-05-02T12:00:00\t\t600\tdos\tno\n"_s;
    EXPECT_EQ(reported(u"2026-05-01T12:00:01"_s, Format::Text), second);
    EXPECT_EQ(reported(u"2026-05-02"_s, Format::Text), second);
    EXPECT_EQ(reported(u"2026-05-03"_s, Format::Text), QString());
    EXPECT_EQ(reported(u"2026-05-03"_s, Format::Csv), u"at,sent at,phone,message,read\r\n"_s);
}

} // namespace

} // namespace norvane
