#pragma once

#include <QString>
#include <QTextDocument>

namespace wendrel::document {

// A document read from HTML or Markdown. Qt's own resource loading reads whatever file a
// document names (a device that never ends, a file of any size); this one reads pictures
// through readPictureSource only, relative paths from `baseFolder`, and nothing else.
class ImportedDocument final : public QTextDocument {
public:
    explicit ImportedDocument(QString baseFolder) : m_baseFolder(std::move(baseFolder)) {}

    const QString& baseFolder() const { return m_baseFolder; }

protected:
    QVariant loadResource(int type, const QUrl& name) override;

private:
    QString m_baseFolder;
};

enum class ImportedFrom { html, markdown };

// Brings what Qt's HTML and Markdown readers made into the document model's shape: every
// picture read (through readPictureSource) into the document as a model picture, or removed
// when it can't be; text in a monospace family marked as code; background pictures dropped;
// Markdown tables given their heading row. Afterwards nothing in the document refers to a
// file, so any copy of it (a printout's clone) reads nothing either.
void normaliseImported(ImportedDocument& document, ImportedFrom from);

}  // namespace wendrel::document
