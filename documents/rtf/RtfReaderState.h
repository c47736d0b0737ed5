#pragma once

#include "RtfContent.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace wendrel::rtf {

// Where a group's text goes.
enum class Destination {
    Body,
    Skip,
    FontTable,
    StyleSheet,
    ListTable,
    ListOverrideTable,
    FieldInstruction,
    Picture,
    OldListNumbering,  // the older per-paragraph \pn list description
};

struct CharacterState {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    int font = -1;  // -1: the document's default font
};

struct ParagraphState {
    int style = 0;
    int outlineLevel = -1;
    int listOverride = 0;
    int listLevel = 0;
    bool inTable = false;
    int tableDepth = 1;  // \itap, counted only with \intbl
    int leftIndent = 0;
    int firstLineIndent = 0;
    std::optional<ListItem> oldStyleList;
};

// Everything a group saves and restores.
struct GroupState {
    Destination destination = Destination::Body;
    CharacterState character;
    ParagraphState paragraph;
    QString link;  // inside a hyperlink field's result
    int unicodeFallbackLength = 1;
    bool inNestedTableProperties = false;
};

struct FontEntry {
    QString name;
    bool fixedPitch = false;
    int codePage = 0;  // 0: the document's
};

struct StyleEntry {
    QString name;
    int outlineLevel = -1;
};

struct ListDefinition {
    int id = 0;
    QList<int> levelNumberFormats;  // 23: bullet
};

struct ListOverride {
    int listId = 0;
    int number = 0;  // \lsN
};

struct PictureInProgress {
    enum class Kind { Unknown, Png, Jpeg } kind = Kind::Unknown;
    QByteArray hexDigits;
    QByteArray binary;
    int goalWidth = 0;  // twips
    int goalHeight = 0;
    int scaleX = 100;
    int scaleY = 100;
};

}  // namespace wendrel::rtf
