#include "TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <stdexcept>

namespace wendrel::test {

namespace {

QString& root()
{
    static QString path;
    return path;
}

}  // namespace

void isolateEnvironment()
{
    QByteArray base = qgetenv("TMPDIR");
    if (base.isEmpty())
        base = "/tmp";
    QByteArray pattern = base + "/wendrel-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("can't create the private test folder");
    root() = QString::fromLocal8Bit(pattern);

    for (const char* folder : {"home", "home/.config", "home/.local/share", "tmp"})
        QDir().mkpath(root() + u'/' + QLatin1String(folder));
    qputenv("HOME", (pattern + "/home"));
    qputenv("XDG_CONFIG_HOME", (pattern + "/home/.config"));
    qputenv("XDG_DATA_HOME", (pattern + "/home/.local/share"));
    qputenv("XDG_CACHE_HOME", (pattern + "/home/.cache"));
    qputenv("XDG_STATE_HOME", (pattern + "/home/.local/state"));
    qputenv("TMPDIR", (pattern + "/tmp"));
    qunsetenv("XDG_DOWNLOAD_DIR");
}

QString privateRoot() { return root(); }

QString scratchParent() { return root() + QStringLiteral("/tmp"); }

QStringList leftoverScratchFolders()
{
    return QDir(scratchParent()).entryList({QStringLiteral("Wendrel-*")},
                                           QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("can't write test file " + path.toStdString());
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QStringList folderEntries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

}  // namespace wendrel::test
