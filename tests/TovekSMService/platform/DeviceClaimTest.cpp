#include "TovekSMService/platform/DeviceClaim.h"

#include "TovekSMService/modem/at/PtyModem.h"
#include "TovekSMService/platform/SerialDevices.h"
#include "support/WaitUntil.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <optional>
#include <semaphore>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = PlatformFailure::Kind;

/// Longer than any test lasts, in milliseconds: whoever waits for it hangs.
constexpr int patience = 24 * 3'600'000;

bool isHeld(DeviceClaim &claim, const QString &path)
{
    return claim.take(path, patience).has_value();
}

/// Why the device can't be had; nothing if it can.
std::optional<Kind> refusal(DeviceClaim &claim, const QString &path, int limitMs = patience)
{
    const auto taken = claim.take(path, limitMs);
    return taken ? std::nullopt : std::optional(taken.error().kind);
}

TEST(DeviceClaim, keepsTheDeviceUntilItIsReleased)
{
    const PtyModem device;
    DeviceClaim first;
    DeviceClaim second;
    EXPECT_TRUE(isHeld(first, device.path()));
    EXPECT_EQ(refusal(second, device.path()), Kind::HeldByAnother);
    EXPECT_TRUE(isHeld(first, device.path()));
    first.release();
    EXPECT_TRUE(isHeld(second, device.path()));
}

TEST(DeviceClaim, honoursExclusiveUseAndFileLocksOfOthers)
{
    const PtyModem device;
    const auto opened = DeviceClaim::openPlainly(device.path().toLocal8Bit());
    ASSERT_TRUE(opened.has_value());
    const int other = *opened;
    QProcess program;
    program.setStandardInputFile(device.path());
    program.start(u"sleep"_s, {u"infinity"_s});
    ASSERT_TRUE(program.waitForStarted(hangMs));
    DeviceClaim claim;
    ASSERT_EQ(::ioctl(other, TIOCEXCL), 0);
    EXPECT_EQ(refusal(claim, device.path()), Kind::HeldByAnother);
    program.kill();
    program.waitForFinished(hangMs);
    // What a killed program left behind holds nobody up.
    EXPECT_EQ(refusal(claim, device.path()),
              ::geteuid() == 0 ? std::nullopt : std::optional(Kind::HeldByAnother));
    claim.release();
    ASSERT_EQ(::ioctl(other, TIOCNXCL), 0);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    EXPECT_EQ(refusal(claim, device.path()), Kind::HeldByAnother);
    ASSERT_EQ(::flock(other, LOCK_UN), 0);
    EXPECT_TRUE(isHeld(claim, device.path()));
    ::close(other);
}

TEST(DeviceClaim, tellsWhyADeviceCannotBeHad)
{
    const struct
    {
        int error;
        Kind kind;
    } rows[] = {
        {ENOENT, Kind::Gone},         {ENODEV, Kind::Gone},         {ENXIO, Kind::Gone},
        {EBUSY, Kind::HeldByAnother}, {EACCES, Kind::NotPermitted}, {EPERM, Kind::NotPermitted},
        {EIO, Kind::Other},
    };
    for (const auto &row : rows) {
        DeviceClaim claim(
            [&row](const QByteArray &) { return failed(PlatformFailure::ofErrno(row.error)); });
        const auto taken = claim.take(u"/dev/x"_s, patience);
        ASSERT_FALSE(taken.has_value()) << row.error;
        EXPECT_EQ(taken.error().kind, row.kind) << row.error;
        EXPECT_FALSE(taken.error().text.isEmpty()) << row.error;
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
    EXPECT_EQ(refusal(claim, u"/dev/x"_s, 50), Kind::Stuck);
    EXPECT_EQ(refusal(claim, u"/dev/x"_s), Kind::Stuck);
    EXPECT_EQ(*attempts, 1);

    back->release();
    over->acquire();
    std::optional<Kind> outcome = Kind::Stuck;
    EXPECT_TRUE(waitUntil([&] {
        outcome = refusal(claim, u"/dev/x"_s);
        return outcome != Kind::Stuck;
    }));
    EXPECT_EQ(outcome, std::nullopt);
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
