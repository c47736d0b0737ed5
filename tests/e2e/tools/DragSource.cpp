// A window to drag files from, for the end-to-end tests: pressing in it and moving starts a
// real drag of the files named on the command line, as a file manager's drag would.

#include <QApplication>
#include <QByteArray>
#include <QDrag>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>

#include <cstdio>

namespace {

void report(const QByteArray& line)
{
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
}

class DragSource : public QLabel {
public:
    explicit DragSource(QStringList files) : m_files(std::move(files))
    {
        setText(QStringLiteral("Drag source: %1 file(s)").arg(m_files.size()));
        setAlignment(Qt::AlignCenter);
        setWindowTitle(QStringLiteral("Drag Source"));
        resize(240, 160);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { m_pressedAt = event->position().toPoint(); }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!(event->buttons() & Qt::LeftButton)
            || (event->position().toPoint() - m_pressedAt).manhattanLength() < QApplication::startDragDistance())
            return;
        auto* mime = new QMimeData;
        QList<QUrl> urls;
        for (const QString& file : std::as_const(m_files))
            urls.append(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
        mime->setUrls(urls);
        // On the heap and kept a while, as file managers do: the target may ask for the data
        // after the drop has been sent.
        auto* drag = new QDrag(this);
        drag->setMimeData(mime);
        // What the tests wait for: the drag under way (the first turn of its own event loop, when
        // the drag selection is ours), and a target taking it or letting it go.
        QTimer::singleShot(0, drag, [] { report("drag started"); });
        connect(drag, &QDrag::actionChanged, [](Qt::DropAction action) {
            report(QByteArray("drag action ") + QByteArray::number(int(action)));
        });
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
        report(QByteArray("drop action ") + QByteArray::number(int(action)));
        QTimer::singleShot(5000, drag, &QObject::deleteLater);
    }

private:
    QStringList m_files;
    QPoint m_pressedAt;
};

}  // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    DragSource source(QApplication::arguments().mid(1));
    source.move(40, 40);
    source.show();
    return QApplication::exec();
}
