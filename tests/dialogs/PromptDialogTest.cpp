#include "app/dialogs/PromptDialog.h"

#include "app/dialogs/SegmentedControl.h"
#include "app/dialogs/SwitchButton.h"
#include "imaging/compress/CompressionSettingsView.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

using namespace wendrel;

namespace {

// Acts on the modal dialog once askUser() has it on screen, the way a person would.
void whenDialogIsUp(std::function<void(PromptDialog&)> act)
{
    auto* poll = new QTimer;
    poll->setInterval(10);
    QObject::connect(poll, &QTimer::timeout, [poll, act = std::move(act)] {
        auto* dialog = qobject_cast<PromptDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        poll->stop();
        poll->deleteLater();
        act(*dialog);
    });
    poll->start();
}

class PromptDialogTest : public ::testing::Test {
protected:
    template <typename Widget>
    static Widget* editor(const PromptDialog& dialog, const char* key)
    {
        auto* widget = qobject_cast<Widget*>(dialog.editor(QString::fromUtf8(key)));
        EXPECT_TRUE(widget) << "no editor of the expected kind for " << key;
        return widget;
    }

    static bool shown(const PromptDialog& dialog, const char* key)
    {
        return dialog.editor(QString::fromUtf8(key))->isVisibleTo(&dialog);
    }

    // The text of a slider's label, which shows its value.
    static QString liveLabel(const PromptDialog& dialog, const char* key)
    {
        const auto* label = dialog.findChild<QLabel*>(QString::fromUtf8(key) + QStringLiteral("Label"));
        return label && label->isVisibleTo(&dialog) ? label->text() : QString();
    }

    // Clicks the middle of one segment.
    static void clickSegment(SegmentedControl& segments, int index)
    {
        const int width = segments.width() / segments.count();
        QTest::mouseClick(&segments, Qt::LeftButton, {}, QPoint(index * width + width / 2, segments.height() / 2));
    }
};

}  // namespace

TEST_F(PromptDialogTest, EachModeShowsItsOwnField)
{
    PromptDialog dialog(compressionSettingsView({}, 1));
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* mode = editor<SegmentedControl>(dialog, "mode");
    ASSERT_TRUE(mode);
    EXPECT_EQ(mode->title(0), u"To file size");

    EXPECT_TRUE(shown(dialog, "targetMB"));
    EXPECT_FALSE(shown(dialog, "reducePercent"));
    EXPECT_FALSE(shown(dialog, "qualityPercent"));

    clickSegment(*mode, 1);
    EXPECT_EQ(mode->currentIndex(), 1);
    EXPECT_FALSE(shown(dialog, "targetMB"));
    EXPECT_TRUE(shown(dialog, "reducePercent"));
    EXPECT_EQ(liveLabel(dialog, "reducePercent"), u"Smaller by 50%");

    QTest::keyClick(mode, Qt::Key_Right);
    EXPECT_EQ(mode->currentIndex(), 2);
    EXPECT_TRUE(shown(dialog, "qualityPercent"));
    EXPECT_FALSE(shown(dialog, "reducePercent"));
    EXPECT_EQ(liveLabel(dialog, "qualityPercent"), u"Quality 75%");

    for (const char* always : {"maxDimension", "format"})
        EXPECT_TRUE(shown(dialog, always)) << always;
}

TEST_F(PromptDialogTest, AnswersAreWhatWasSet)
{
    PromptDialog dialog(compressionSettingsView({}, 2));
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    clickSegment(*editor<SegmentedControl>(dialog, "mode"), 2);
    auto* quality = editor<QSlider>(dialog, "qualityPercent");
    QTest::keyClick(quality, Qt::Key_End);
    EXPECT_EQ(liveLabel(dialog, "qualityPercent"), u"Quality 100%");
    quality->setValue(59);  // the first position is 1 percent
    EXPECT_EQ(liveLabel(dialog, "qualityPercent"), u"Quality 60%");
    auto* side = editor<QComboBox>(dialog, "maxDimension");
    EXPECT_EQ(side->itemText(0), u"Keep original");
    side->setCurrentIndex(side->findText(QStringLiteral("1280 px")));
    editor<QComboBox>(dialog, "format")->setCurrentIndex(1);

    CompressionSettings expected;
    expected.mode = CompressionSettings::Mode::quality;
    expected.qualityPercent = 60;
    expected.maxDimension = 1280;
    expected.format = CompressionSettings::Format::heic;
    EXPECT_EQ(CompressionSettings::fromJson(dialog.answers()), expected);
}

TEST_F(PromptDialogTest, ItOpensWithTheStoredValuesAndCountsTheImages)
{
    CompressionSettings stored;
    stored.mode = CompressionSettings::Mode::reduceBy;
    stored.reducePercent = 35;
    stored.targetMB = 0.25;
    stored.maxDimension = 1600;
    PromptDialog dialog(compressionSettingsView(stored, 1));
    EXPECT_EQ(editor<SegmentedControl>(dialog, "mode")->currentIndex(), 1);
    EXPECT_EQ(editor<QDoubleSpinBox>(dialog, "targetMB")->value(), 0.25);
    EXPECT_EQ(editor<QComboBox>(dialog, "maxDimension")->currentText(), u"1600 px");
    EXPECT_EQ(CompressionSettings::fromJson(dialog.answers()), stored);
    EXPECT_EQ(dialog.windowTitle(), u"Compress");
    EXPECT_EQ(dialog.confirmButton()->text(), u"Compress image");
    EXPECT_TRUE(dialog.confirmButton()->isDefault());
    EXPECT_EQ(dialog.cancelButton()->text(), u"Cancel");
    EXPECT_EQ(PromptDialog(compressionSettingsView({}, 3)).confirmButton()->text(), u"Compress 3 images");
}

TEST_F(PromptDialogTest, AskUserGivesTheAnswersOnConfirmAndNothingOnCancel)
{
    const PromptRequest request = compressionSettingsView({}, 1);

    whenDialogIsUp([](PromptDialog& dialog) {
        dialog.findChild<QDoubleSpinBox*>(QStringLiteral("targetMB"))->setValue(0.5);
        QTest::keyClick(&dialog, Qt::Key_Return);  // the confirm button is the default
    });
    const std::optional<QJsonObject> confirmed = askUser(request);
    ASSERT_TRUE(confirmed);
    CompressionSettings expected;
    expected.targetMB = 0.5;
    EXPECT_EQ(CompressionSettings::fromJson(*confirmed), expected);

    whenDialogIsUp([](PromptDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_FALSE(askUser(request));

    whenDialogIsUp([](PromptDialog& dialog) { dialog.cancelButton()->click(); });
    EXPECT_FALSE(askUser(request));

    whenDialogIsUp([](PromptDialog& dialog) { dialog.confirmButton()->click(); });
    EXPECT_EQ(askUser(request), request.startingAnswers());
}

TEST_F(PromptDialogTest, TextPasswordFolderAndASwitchWithItsCaption)
{
    using Kind = PromptField::Kind;
    const PromptRequest request{
        .title = QStringLiteral("Protect"),
        .message = QStringLiteral("Protect 2 PDFs"),
        .fields = {
            {.kind = Kind::toggle, .key = QStringLiteral("stamp"), .label = QStringLiteral("Stamp every page"),
             .value = false, .caption = QStringLiteral("Pages stay as they are."),
             .captionWhenOn = QStringLiteral("Every page gets the text.")},
            {.kind = Kind::text, .key = QStringLiteral("text"), .label = QStringLiteral("Watermark text"),
             .value = QStringLiteral("CONFIDENTIAL"), .required = true,
             .shownWhen = PromptCondition{QStringLiteral("stamp"), {true}}},
            {.kind = Kind::password, .key = QStringLiteral("password"), .label = QStringLiteral("Password for the PDF"),
             .value = QString(), .required = true, .confirm = true},
            {.kind = Kind::folder, .key = QStringLiteral("folder"), .label = QStringLiteral("Copy to"),
             .value = QDir::homePath()},
        },
        .confirmText = QStringLiteral("Protect"),
        .cancelText = QStringLiteral("Cancel"),
    };
    PromptDialog dialog(request);
    auto* caption = dialog.findChild<QLabel*>(QStringLiteral("stampCaption"));
    ASSERT_TRUE(caption);
    EXPECT_EQ(caption->text(), u"Pages stay as they are.");
    EXPECT_FALSE(shown(dialog, "text"));

    auto* password = editor<QLineEdit>(dialog, "password");
    EXPECT_EQ(password->echoMode(), QLineEdit::Password);
    EXPECT_FALSE(dialog.confirmButton()->isEnabled()) << "a required password is still empty";
    auto* again = dialog.findChild<QLineEdit*>(QStringLiteral("passwordConfirmation"));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->echoMode(), QLineEdit::Password);
    auto* passwordCaption = dialog.findChild<QLabel*>(QStringLiteral("passwordCaption"));
    // What the second line holds as the password is typed: the button, and the hint under it.
    const struct {
        const char* password;
        const char* again;
        bool confirms;
        const char* hint;
    } typing[] = {
        {"s3cret", "", false, ""},
        {"s3cret", "s3cre", false, "The passwords don't match"},
        {"s3cret", "s3cret", true, ""},
        {"s3cret", "s3cret ", false, "The passwords don't match"},
        {"", "", false, ""},
        {"s3cret", "s3cret", true, ""},
    };
    for (const auto& step : typing) {
        password->clear();
        again->clear();
        QTest::keyClicks(password, QString::fromLatin1(step.password));
        QTest::keyClicks(again, QString::fromLatin1(step.again));
        EXPECT_EQ(dialog.confirmButton()->isEnabled(), step.confirms) << step.password << "/" << step.again;
        EXPECT_EQ(passwordCaption->isVisibleTo(&dialog) ? passwordCaption->text() : QString(), QString::fromLatin1(step.hint))
            << step.password << "/" << step.again;
    }

    editor<SwitchButton>(dialog, "stamp")->click();
    EXPECT_EQ(caption->text(), u"Every page gets the text.");
    EXPECT_TRUE(shown(dialog, "text"));
    auto* text = editor<QLineEdit>(dialog, "text");
    text->clear();
    EXPECT_FALSE(dialog.confirmButton()->isEnabled()) << "the shown watermark text is empty";
    QTest::keyClicks(text, QStringLiteral("DRAFT"));

    auto* folder = editor<QLineEdit>(dialog, "folder");
    folder->setText(QStringLiteral("relative/path"));
    EXPECT_FALSE(dialog.confirmButton()->isEnabled()) << "a folder must be an absolute path";
    folder->setText(QDir::tempPath());
    ASSERT_TRUE(dialog.confirmButton()->isEnabled());

    EXPECT_EQ(dialog.answers(), (QJsonObject{{QStringLiteral("stamp"), true},
                                             {QStringLiteral("text"), QStringLiteral("DRAFT")},
                                             {QStringLiteral("password"), QStringLiteral("s3cret")},
                                             {QStringLiteral("folder"), QDir::tempPath()}}));

    // Hidden again, the emptied text is left out and keeps its starting value.
    text->clear();
    editor<SwitchButton>(dialog, "stamp")->click();
    EXPECT_TRUE(dialog.confirmButton()->isEnabled());
    EXPECT_FALSE(dialog.answers().contains(QStringLiteral("text")));
}

// Switching the mode moves nothing: the sheet keeps its size and the pickers below stay where
// they are under the pointer. It fits a small screen. With WENDREL_SCREENSHOTS set to a
// folder, the sheet is saved there as a picture.
TEST_F(PromptDialogTest, CompressionSheetStaysPutAcrossModesAndFitsASmallScreen)
{
    PromptDialog dialog(compressionSettingsView({}, 1));
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    auto* mode = editor<SegmentedControl>(dialog, "mode");
    const QWidget* side = dialog.editor(QStringLiteral("maxDimension"));
    QList<QRect> layouts;  // the sheet's size and where the "Longest side" picker sits
    for (int index : {1, 2, 0}) {
        mode->setCurrentIndex(index);
        dialog.layout()->activate();
        layouts.append(QRect(side->mapTo(&dialog, QPoint(0, 0)), dialog.size()));
    }
    EXPECT_EQ(layouts, QList<QRect>(3, layouts.first()));
    EXPECT_LE(dialog.width(), 640);
    EXPECT_LE(dialog.height(), 480);

    const QString folder = qEnvironmentVariable("WENDREL_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        EXPECT_TRUE(dialog.grab().save(folder + QStringLiteral("/compress-dialog.png")));
    }
}
