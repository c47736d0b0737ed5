#include "DocumentTarget.h"

namespace wendrel {

QString extension(DocumentTarget target)
{
    switch (target) {
    case DocumentTarget::pdf: return QStringLiteral("pdf");
    case DocumentTarget::docx: return QStringLiteral("docx");
    case DocumentTarget::rtf: return QStringLiteral("rtf");
    case DocumentTarget::odt: return QStringLiteral("odt");
    case DocumentTarget::html: return QStringLiteral("html");
    case DocumentTarget::txt: return QStringLiteral("txt");
    case DocumentTarget::md: return QStringLiteral("md");
    case DocumentTarget::epub: return QStringLiteral("epub");
    }
    return {};
}

}  // namespace wendrel
