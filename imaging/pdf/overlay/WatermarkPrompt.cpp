#include "WatermarkPrompt.h"

#include "imaging/pdf/PdfDocument.h"
#include "operations/settings/SettingsStore.h"

namespace wendrel {

namespace {

const QString textKey = QStringLiteral("text");
const QString rememberedKey = QStringLiteral("watermarkText");

QString rememberedText()
{
    const QString stored = SettingsStore::text(rememberedKey).value_or(QString()).trimmed();
    return stored.isEmpty() ? QStringLiteral("CONFIDENTIAL") : stored;
}

}  // namespace

OperationPrompt watermarkPrompt()
{
    return {
        .request = [](const QStringList& paths) {
            return PromptRequest{
                .title = pdfText("Watermark"),
                .fields = {{
                    .kind = PromptField::Kind::text,
                    .key = textKey,
                    .label = pdfText("Watermark text"),
                    .option = textKey,
                    .value = rememberedText(),
                    .required = true,
                }},
                .confirmText = paths.size() == 1 ? pdfText("Watermark PDF")
                                                 : pdfText("Watermark %1 PDFs").arg(paths.size()),
                .cancelText = pdfText("Cancel"),
            };
        },
        .remember = [](const QJsonObject& answers) {
            const QString text = answers.value(textKey).toString().trimmed();
            if (!text.isEmpty())
                SettingsStore::setText(rememberedKey, text);
        },
    };
}

QString watermarkTextForJob(const OperationContext& context)
{
    const QString answered = context.answers().value(textKey).toString().trimmed();
    return answered.isEmpty() ? rememberedText() : answered;
}

}  // namespace wendrel
