#include "TovekSMService/platform/DeviceClaim.h"

#include "TovekSMService/modem/at/PtyModem.h"
#include "TovekSMService/platform/SerialDevices.h"
#include "support/WaitUntil.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <semaphore>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Outcome = DeviceClaim::Outcome;

/// Longer than any test lasts, in milliseconds: whoever waits for it hangs.
constexpr int patience = 24 * 3'600'000;

int asInt(Outcome outcome)
{
    return static_cast<int>(outcome);
}

TEST(DeviceClaim, keepsTheDeviceUntilItIsReleased)
{
    const PtyModem device;
    DeviceClaim first;
    DeviceClaim second;
    EXPECT_EQ(asInt(first.take(device.path(), patience)), asInt(Outcome::Held));
    EXPECT_EQ(asInt(second.take(device.path(), patience)), asInt(Outcome::HeldByAnother));
    EXPECT_EQ(asInt(first.take(device.path(), patience)), asInt(Outcome::Held));
    first.release();
    EXPECT_EQ(asInt(second.take(device.path(), patience)), asInt(Outcome::Held));
}

TEST(DeviceClaim, honoursExclusiveUseAndFileLocksOfOthers)
{
    const PtyModem device;
    const int other = DeviceClaim::openPlainly(device.path().toLocal8Bit());
    ASSERT_GE(other, 0);
    QProcess program;
    program.setStandardInputFile(device.path());
    program.start(u"sleep"_s, {u"infinity"_s});
    ASSERT_TRUE(program.waitForStarted(hangMs));
    DeviceClaim claim;
    ASSERT_EQ(::ioctl(other, TIOCEXCL), 0);
    EXPECT_EQ(asInt(claim.take(device.path(), patience)), asInt(Outcome::HeldByAnother));
    program.kill();
    program.waitForFinished(hangMs);
    // What a killed program left behind holds nobody up.
    EXPECT_EQ(asInt(claim.take(device.path(), patience)),
              asInt(::geteuid() == 0 ? Outcome::Held : Outcome::HeldByAnother));
    claim.release();
    ASSERT_EQ(::ioctl(other, TIOCNXCL), 0);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    EXPECT_EQ(asInt(claim.take(device.path(), patience)), asInt(Outcome::HeldByAnother));
    ASSERT_EQ(::flock(other, LOCK_UN), 0);
    EXPECT_EQ(asInt(claim.take(device.path(), patience)), asInt(Outcome::Held));
    ::close(other);
}

TEST(DeviceClaim, tellsWhyADeviceCannotBeHad)
{
    const struct
    {
        int error;
        Outcome outcome;
    } rows[] = {
        {ENOENT, Outcome::Gone},         {ENODEV, Outcome::Gone},
        {ENXIO, Outcome::Gone},          {EBUSY, Outcome::HeldByAnother},
        {EACCES, Outcome::NotPermitted}, {EPERM, Outcome::NotPermitted},
        {EIO, Outcome::Failed},
    };
    for (const auto &row : rows) {
        DeviceClaim claim([&row](const QByteArray &) {
            errno = row.error;
            return -1;
        });
        EXPECT_EQ(asInt(claim.take(u"/dev/x"_s, patience)), asInt(row.outcome)) << row.error;
        EXPECT_FALSE(claim.errorText().isEmpty());
    }
}

TEST(DeviceClaim, aDriverThatDoesNotComeBackCostsNoMoreThanTheLimitAndOnlyOneAttempt)
{
    const auto back = std::make_shared<std::binary_semaphore>(0);
    const auto attempts = std::make_shared<std::atomic<int>>(0);
    const auto over = std::make_shared<std::binary_semaphore>(0);
    DeviceClaim claim([=](const QByteArray &) {
        if (++*attempts == 1) {
            back->acquire();
            over->release();
        }
        return ::open("/dev/null", O_RDWR | O_CLOEXEC);
    });
    // The driver comes back behind both, so neither has waited for it.
    EXPECT_EQ(asInt(claim.take(u"/dev/x"_s, 50)), asInt(Outcome::Stuck));
    EXPECT_EQ(asInt(claim.take(u"/dev/x"_s, patience)), asInt(Outcome::Stuck));
    EXPECT_EQ(*attempts, 1);

    back->release();
    over->acquire();
    Outcome outcome = Outcome::Stuck;
    EXPECT_TRUE(waitUntil([&] {
        outcome = claim.take(u"/dev/x"_s, patience);
        return outcome != Outcome::Stuck;
    }));
    EXPECT_EQ(asInt(outcome), asInt(Outcome::Held));
    EXPECT_EQ(*attempts, 2);
}

TEST(DeviceClaim, theProgramThatHasADeviceOpenIsNamed)
{
    const PtyModem device;
    EXPECT_FALSE(SerialDevices::openerOf(device.path()));
    QProcess other;
    other.setStandardInputFile(device.path());
    other.start(u"sleep"_s, {u"infinity"_s});
    ASSERT_TRUE(other.waitForStarted(hangMs));
    const auto holder = SerialDevices::openerOf(device.path());
    ASSERT_TRUE(holder);
    EXPECT_EQ(holder->pid, other.processId());
    EXPECT_EQ(holder->name, u"sleep"_s);
    other.kill();
    other.waitForFinished(hangMs);
    EXPECT_FALSE(SerialDevices::openerOf(device.path()));
}

} // namespace

} // namespace norvane
