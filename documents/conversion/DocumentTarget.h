#pragma once

#include <QString>

#include <array>

namespace wendrel {

// The formats a document converts to, in the order the convert ring lists them.
enum class DocumentTarget { pdf, docx, rtf, odt, html, txt, md, epub };

inline constexpr std::array allDocumentTargets{
    DocumentTarget::pdf,  DocumentTarget::docx, DocumentTarget::rtf, DocumentTarget::odt,
    DocumentTarget::html, DocumentTarget::txt,  DocumentTarget::md,  DocumentTarget::epub,
};

// "pdf", "docx", "rtf", "odt", "html", "txt", "md", "epub".
QString extension(DocumentTarget target);

}  // namespace wendrel
