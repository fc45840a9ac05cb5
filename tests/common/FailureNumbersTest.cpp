#include "common/FailureNumbers.h"

#include <QList>

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(FailureNumbersTest, numbersHaveTheirDescriptions)
{
    const QList<std::pair<qint32, QString>> known{
        {5, u"Invalid procedure call or argument"_qs},
        {6, u"Overflow"_qs},
        {7, u"Out of memory"_qs},
        {9, u"Subscript out of range"_qs},
        {13, u"Type mismatch"_qs},
        {51, u"Internal error"_qs},
        {52, u"Bad file name or number"_qs},
        {53, u"File not found"_qs},
        {54, u"Bad file mode"_qs},
        {55, u"File already open"_qs},
        {57, u"Device I/O error"_qs},
        {58, u"File already exists"_qs},
        {61, u"Disk full"_qs},
        {62, u"Input past end of file"_qs},
        {67, u"Too many files"_qs},
        {68, u"Device unavailable"_qs},
        {70, u"Permission denied"_qs},
        {71, u"Disk not ready"_qs},
        {75, u"Path/File access error"_qs},
        {76, u"Path not found"_qs},
        {91, u"Object variable or With block variable not set"_qs},
        {380, u"Invalid property value"_qs},
        {429, u"ActiveX component can't create object"_qs},
        {457, u"This key is already associated with an element of this collection"_qs},
        {462, u"The remote server machine does not exist or is unavailable"_qs},
        {3704, u"Operation is not allowed when the object is closed."_qs},
    };
    for (const auto &[number, text] : known)
        EXPECT_EQ(Failure::description(number), text) << number;
}

TEST(FailureNumbersTest, unknownNumberHasTheGeneralDescription)
{
    for (const qint32 number : {0, -1, 8, 99, 32768})
        EXPECT_EQ(Failure::description(number),
                  QStringLiteral("Application-defined or object-defined error"));
}

TEST(FailureNumbersTest, platformErrorsHaveTheirNumbers)
{
    const QList<std::pair<int, qint32>> known{
        {EEXIST, 58}, {ENOENT, 53}, {ENOTDIR, 76},   {ENOSPC, 61},       {EDQUOT, 61},
        {EACCES, 70}, {EPERM, 70},  {EROFS, 70},     {EIO, 57},          {EISDIR, 75},
        {EMFILE, 67}, {ENFILE, 67}, {ENODEV, 68},    {ENXIO, 68},        {ETXTBSY, 75},
        {ENOMEM, 7},  {EBADF, 52},  {EILSEQ, 52},    {EPIPE, 57},        {EBUSY, 70},
        {EAGAIN, 70}, {ELOOP, 76},  {ENOTEMPTY, 75}, {ENAMETOOLONG, 76}, {ENOMEDIUM, 71},
        {EFBIG, 75},  {EINVAL, 75}, {0, 75},
    };
    for (const auto &[error, number] : known)
        EXPECT_EQ(Failure::fromErrno(error), number) << error;
}

TEST(FailureNumbersTest, raisedFailureCarriesNumberSourceAndDescription)
{
    try {
        Failure::raiseErrno(ENOSPC, QStringLiteral("CTimerMM::Interval"));
        FAIL() << "no failure";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 61);
        EXPECT_EQ(failure.source(), QStringLiteral("CTimerMM::Interval"));
        EXPECT_EQ(failure.description(), QStringLiteral("Disk full"));
        EXPECT_EQ(failure.shown(), QStringLiteral("Disk full - 61"));
        EXPECT_STREQ(failure.what(), "CTimerMM::Interval: Disk full - 61");
    }
}

} // namespace
