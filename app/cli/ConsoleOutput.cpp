#include "ConsoleOutput.h"

#include <QJsonDocument>

#include <cstdio>

namespace wendrel {

void printOut(const QString& line)
{
    std::fputs(line.toUtf8().constData(), stdout);
    if (!line.endsWith(u'\n'))
        std::fputc('\n', stdout);
    std::fflush(stdout);
}

void printError(const QString& line)
{
    std::fprintf(stderr, "wendrel: %s\n", line.toUtf8().constData());
}

void printJson(const QJsonObject& object)
{
    std::fputs(QJsonDocument(object).toJson(QJsonDocument::Indented).constData(), stdout);
    std::fflush(stdout);
}

}  // namespace wendrel
