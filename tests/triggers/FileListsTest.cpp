#include "triggers/FileLists.h"
#include "triggers/FileManagers.h"

#include <gtest/gtest.h>

#include <vector>

using namespace wendrel;

namespace {

struct ListCase {
    const char* text;
    std::vector<const char*> files;
};

QStringList strings(const std::vector<const char*>& values)
{
    QStringList list;
    for (const char* value : values)
        list.append(QString::fromUtf8(value));
    return list;
}

}  // namespace

TEST(FileLists, UriListsNameLocalFilesOnly)
{
    const ListCase cases[] = {
        {"file:///home/me/a.png\n", {"/home/me/a.png"}},
        {"file:///home/me/a.png\r\nfile:///home/me/b.jpg\r\n", {"/home/me/a.png", "/home/me/b.jpg"}},
        {"file:///home/me/a%20b%23.png", {"/home/me/a b#.png"}},
        {"file:///home/me/%C3%A9t%C3%A9.png", {"/home/me/été.png"}},
        {"# a comment\n\n  file:///x.png  \n", {"/x.png"}},
        {"https://example.org/a.png\nsftp://host/b.png\nfile:///c.png", {"/c.png"}},
        {"", {}},
    };
    for (const ListCase& c : cases)
        EXPECT_EQ(localFilesFromUriList(c.text), strings(c.files)) << c.text;
}

TEST(FileLists, GnomeCopiedFilesSkipTheirVerb)
{
    const ListCase cases[] = {
        {"copy\nfile:///home/me/a.png\nfile:///home/me/b.png", {"/home/me/a.png", "/home/me/b.png"}},
        {"cut\nfile:///a.png\n", {"/a.png"}},
        {"file:///a.png", {}},  // no verb line: the only line is taken for the verb
        {"copy\n", {}},
    };
    for (const ListCase& c : cases)
        EXPECT_EQ(localFilesFromGnomeCopiedFiles(c.text), strings(c.files)) << c.text;
}

TEST(FileManagers, KnownByEitherPartOfTheirClassInAnyCase)
{
    struct Case {
        const char* instance;
        const char* className;
        bool isFileManager;
    };
    const Case cases[] = {
        {"nautilus", "Nautilus", true},
        {"org.gnome.Nautilus", "org.gnome.Nautilus", true},
        {"dolphin", "dolphin", true},
        {"Thunar", "Thunar", true},
        {"", "Pcmanfm-qt", true},
        {"nemo-desktop", "Nemo", true},
        {"io.elementary.files", "", true},
        {"firefox", "Firefox", false},
        {"nautilus-preview", "Sushi", false},
        {"", "", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isFileManagerWindowClass(QString::fromUtf8(c.instance), QString::fromUtf8(c.className)),
                  c.isFileManager)
            << c.instance << " / " << c.className;
    }
}
