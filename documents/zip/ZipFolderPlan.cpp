#include "ZipFolderPlan.h"

#include "operations/FileNames.h"
#include "operations/OperationError.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("ZipWriter", text); }

QString shownName(const QByteArray& path) { return lastPathComponent(QFile::decodeName(path)); }

OperationError unreadable(const QByteArray& path, const QString& reason)
{
    return OperationError(translate("Couldn't read “%1”: %2").arg(shownName(path), reason));
}

using Identity = std::pair<quint64, quint64>;

void planFolder(const FolderView& view, const QByteArray& path, const QByteArray& name,
                const ItemFacts& facts, QList<Identity>& foldersAbove, QList<PlannedItem>& plan)
{
    if (foldersAbove.contains(facts.identity))
        return;
    if (!facts.readable)
        throw unreadable(path, translate("Permission denied"));
    plan.append({.name = name + '/', .sourcePath = {}, .size = 0, .modified = {}});

    QList<QByteArray> children = view.names(path);
    std::sort(children.begin(), children.end());
    foldersAbove.append(facts.identity);
    for (const QByteArray& child : std::as_const(children)) {
        if (child.startsWith('.'))
            continue;
        const QByteArray childPath = path + '/' + child;
        const QByteArray childName = name + '/' + child;
        const ItemFacts childFacts = view.inspect(childPath);
        if (childFacts.kind == ItemFacts::Kind::folder)
            planFolder(view, childPath, childName, childFacts, foldersAbove, plan);
        else if (childFacts.kind == ItemFacts::Kind::file)
            plan.append({childName, childPath, childFacts.size, childFacts.modified});
    }
    foldersAbove.removeLast();
}

}  // namespace

QList<PlannedItem> planItem(const FolderView& view, const QByteArray& path, const QByteArray& name)
{
    QByteArray item = path;
    while (item.size() > 1 && item.endsWith('/'))
        item.chop(1);
    const ItemFacts facts = view.inspect(item);
    QList<PlannedItem> plan;
    switch (facts.kind) {
    case ItemFacts::Kind::folder: {
        QList<Identity> foldersAbove;
        planFolder(view, item, name, facts, foldersAbove, plan);
        break;
    }
    case ItemFacts::Kind::file:
        plan.append({name, item, facts.size, facts.modified});
        break;
    case ItemFacts::Kind::other:
        throw OperationError(translate("“%1” is neither a file nor a folder").arg(shownName(item)));
    case ItemFacts::Kind::missing:
        throw unreadable(item, translate("No such file or folder"));
    }
    return plan;
}

}  // namespace wendrel
