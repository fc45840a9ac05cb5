#include "support/TestMain.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#ifdef NORVANE_TEST_CONSOLE
#include "foundation/ui/Application.h"
#include "foundation/ui/Look.h"
#endif

#include <gtest/gtest.h>

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

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);

    const QTemporaryDir sandbox;
    g_sandbox = sandbox.path();
    useFolder("XDG_CONFIG_HOME", g_sandbox + QStringLiteral("/config"));
    useFolder("XDG_DATA_HOME", g_sandbox + QStringLiteral("/data"));
    useFolder("XDG_RUNTIME_DIR", g_sandbox + QStringLiteral("/runtime"));
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
