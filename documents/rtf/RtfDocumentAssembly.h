#pragma once

#include "RtfContent.h"

#include <memory>

class QTextDocument;

namespace wendrel::rtf {

// Builds the document model from what the reader gathered.
std::unique_ptr<QTextDocument> assembleDocument(const QList<Item>& items);

}  // namespace wendrel::rtf
