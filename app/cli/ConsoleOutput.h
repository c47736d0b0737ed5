#pragma once

#include <QJsonObject>
#include <QString>

namespace wendrel {

// Standard output: one line, UTF-8.
void printOut(const QString& line);

// Standard error: one line, prefixed with "wendrel: ".
void printError(const QString& line);

// Standard output: an indented JSON document.
void printJson(const QJsonObject& object);

}  // namespace wendrel
