#include "support/TestMain.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#ifdef NORVANE_TEST_CONSOLE
#include "foundation/ui/Application.h"
#include "foundation/ui/Look.h"
#endif

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

#ifdef __SANITIZE_THREAD__

#include <cstdarg>

#include <dlfcn.h>

// The sanitizer takes every child for one with memory of its own. After one that shares its
// parent's, as the toolkit's are started, it sees no lock any more of the thread that started it.
// This goes past it.
extern "C" int clone(int (*function)(void *), void *stack, int flags, void *argument, ...) noexcept
{
    using Clone = int (*)(int (*)(void *), void *, int, void *, ...);
    static const auto own =
        reinterpret_cast<Clone>(::dlsym(::dlopen("libc.so.6", RTLD_LAZY), "clone"));
    va_list others;
    va_start(others, argument);
    void *const parentId = va_arg(others, void *);
    void *const storage = va_arg(others, void *);
    void *const childId = va_arg(others, void *);
    va_end(others);
    return own(function, stack, flags, argument, parentId, storage, childId);
}

#endif

namespace norvane {

namespace {
QString g_sandbox;

void useFolder(const char *variable, const QString &path)
{
    QDir().mkpath(path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv(variable, QFile::encodeName(path));
}
} // namespace

QString testSandbox()
{
    return g_sandbox;
}

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);

    const QTemporaryDir sandbox;
    g_sandbox = sandbox.path();
    useFolder("XDG_CONFIG_HOME", g_sandbox + u"/config"_s);
    useFolder("XDG_DATA_HOME", g_sandbox + u"/data"_s);
    useFolder("XDG_RUNTIME_DIR", g_sandbox + u"/runtime"_s);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");

#ifdef NORVANE_TEST_CONSOLE
    const Application application(argc, argv);
    applyLook();
#else
    const QApplication application(argc, argv);
#endif
    return RUN_ALL_TESTS();
}
