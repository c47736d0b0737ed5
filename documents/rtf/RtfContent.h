#pragma once

#include "documents/model/DocumentModel.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

namespace wendrel::rtf {

// What the reader gathers before any of it becomes a QTextDocument: RTF tells a table only by
// marks on its paragraphs and row ends, so tables are put together here first.

struct PictureData {
    QByteArray bytes;  // PNG or JPEG
    double widthPoints = 0;
    double heightPoints = 0;
};

struct Span {
    QString text;
    document::InlineStyle style;
    std::optional<PictureData> picture;
};

struct ListItem {
    bool ordered = false;
    int level = 1;
    int list = 0;  // items of the same list share a number
};

struct Paragraph {
    QList<Span> spans;
    int headingLevel = 0;
    std::optional<ListItem> listItem;

    bool isEmpty() const { return spans.isEmpty(); }
};

struct Table;
using Item = std::variant<Paragraph, std::shared_ptr<Table>>;

struct Cell {
    QList<Item> items;
    bool mergedWithPrevious = false;  // continues the cell to its left
    bool mergedWithAbove = false;     // continues the cell above
};

struct Row {
    QList<Cell> cells;
    bool header = false;
};

struct Table {
    QList<Row> rows;
};

// The cell merges and heading mark of a row, from its \trowd ... \cellx definition.
struct RowDefinition {
    struct CellMerge {
        bool withPrevious = false;
        bool withAbove = false;
    };
    QList<CellMerge> cells;
    bool header = false;
};

}  // namespace wendrel::rtf
