#include "common/FailureNumbers.h"

#include <QList>

#include <gtest/gtest.h>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(FailureNumbersTest, numbersHaveTheirDescriptions)
{
    const QList<std::pair<qint32, QString>> known{
        {5, u"Invalid procedure call or argument"_s},
        {6, u"Overflow"_s},
        {7, u"Out of memory"_s},
        {9, u"Subscript out of range"_s},
        {13, u"Type mismatch"_s},
        {51, u"Internal error"_s},
        {52, u"Bad file name or number"_s},
        {53, u"File not found"_s},
        {54, u"Bad file mode"_s},
        {55, u"File already open"_s},
        {57, u"Device I/O error"_s},
        {58, u"File already exists"_s},
        {61, u"Disk full"_s},
        {62, u"Input past end of file"_s},
        {67, u"Too many files"_s},
        {68, u"Device unavailable"_s},
        {70, u"Permission denied"_s},
        {71, u"Disk not ready"_s},
        {75, u"Path/File access error"_s},
        {76, u"Path not found"_s},
        {91, u"Object variable or With block variable not set"_s},
        {380, u"Invalid property value"_s},
        {429, u"ActiveX component can't create object"_s},
        {457, u"This key is already associated with an element of this collection"_s},
        {462, u"The remote server machine does not exist or is unavailable"_s},
        {3704, u"Operation is not allowed when the object is closed."_s},
    };
    for (const auto &[number, text] : known)
        EXPECT_EQ(Failure::description(number), text) << number;
}

TEST(FailureNumbersTest, unknownNumberHasTheGeneralDescription)
{
    for (const qint32 number : {0, -1, 8, 99, 32768})
        EXPECT_EQ(Failure::description(number), u"Application-defined or object-defined error"_s);
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

TEST(FailureNumbersTest, aPlatformErrorAsAValueIsWhatItIsRaisedAs)
{
    const NumberedFailure failure = Failure::ofErrno(ENOSPC, u"readWorkbook"_s);
    EXPECT_EQ(failure.number(), 61);
    EXPECT_EQ(failure.source(), u"readWorkbook"_s);
    EXPECT_EQ(failure.description(), u"Disk full"_s);
}

TEST(FailureNumbersTest, raisedFailureCarriesNumberSourceAndDescription)
{
    try {
        Failure::raiseErrno(ENOSPC, u"CTimerMM::Interval"_s);
        FAIL() << "no failure";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 61);
        EXPECT_EQ(failure.source(), u"CTimerMM::Interval"_s);
        EXPECT_EQ(failure.description(), u"Disk full"_s);
        EXPECT_EQ(failure.shown(), u"Disk full - 61"_s);
        EXPECT_STREQ(failure.what(), "CTimerMM::Interval: Disk full - 61");
    }
}

} // namespace

} // namespace norvane
