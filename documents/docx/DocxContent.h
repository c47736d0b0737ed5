#pragma once

#include "documents/model/DocumentModel.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace wendrel::docx {

// A document body as read from word/document.xml, before it becomes a QTextDocument: tables
// need their size and spans known before Qt can make them.

struct PictureReference {
    QString partPath;  // the image part inside the package
    double widthPoints = 0;   // 0: the picture's own size
    double heightPoints = 0;
};

struct ContentRun {
    QString text;  // may hold QChar::LineSeparator and tabs; empty for a picture
    document::InlineStyle style;
    std::optional<PictureReference> picture;
};

struct ListItem {
    int numberingId = 0;
    int level = 1;  // 1: outermost
    bool ordered = false;
};

struct ContentParagraph {
    int headingLevel = 0;  // 1-6, or 0
    std::optional<ListItem> list;
    QList<ContentRun> runs;

    bool isEmpty() const { return runs.isEmpty(); }
};

struct ContentTable;

struct ContentBlock {
    ContentParagraph paragraph;
    std::unique_ptr<ContentTable> table;  // when set, the block is this table
};

struct ContentCell {
    int row = 0;
    int column = 0;
    int rowSpan = 1;
    int columnSpan = 1;
    std::vector<ContentBlock> blocks;
};

struct ContentTable {
    int rows = 0;
    int columns = 0;
    int headerRows = 0;
    std::vector<ContentCell> cells;
};

}  // namespace wendrel::docx
