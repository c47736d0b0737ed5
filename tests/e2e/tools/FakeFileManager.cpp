// A stand-in file manager for the end-to-end tests: a window whose WM_CLASS names a real file
// manager (this program is built as "nemo") and that answers Ctrl+C by copying the files named
// on its command line, the way file managers put their selection on the clipboard. It asks for
// the focus when it starts and says "focused" once it has it.

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QShortcut>
#include <QUrl>
#include <QWindow>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList files = QApplication::arguments().mid(1);
    QLabel window(QStringLiteral("Files: %1").arg(files.join(QStringLiteral(", "))));
    window.setWindowTitle(QStringLiteral("Fake File Manager"));
    window.resize(420, 300);
    window.move(600, 100);

    QShortcut copy(QKeySequence::Copy, &window);
    QObject::connect(&copy, &QShortcut::activated, [&files] {
        auto* mime = new QMimeData;
        QList<QUrl> urls;
        QByteArray copied("copy");
        for (const QString& file : files) {
            const QUrl url = QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath());
            urls.append(url);
            copied += '\n' + url.toEncoded();
        }
        mime->setUrls(urls);
        mime->setData(QStringLiteral("x-special/gnome-copied-files"), copied);
        QApplication::clipboard()->setMimeData(mime);
    });
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, [](QWindow* focused) {
        if (focused) {
            std::printf("focused\n");
            std::fflush(stdout);
        }
    });
    window.show();
    window.activateWindow();
    return QApplication::exec();
}
