#include "app/cli/TerminalPrompt.h"

#include "imaging/compress/CompressionSettingsView.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <thread>

using namespace wendrel;

namespace {

// Reads what is waiting on a descriptor without blocking.
QByteArray drain(int fd)
{
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    QByteArray bytes;
    char buffer[4096];
    for (ssize_t count; (count = ::read(fd, buffer, sizeof buffer)) > 0;)
        bytes.append(buffer, count);
    return bytes;
}

void type(int fd, const char* text) { ASSERT_EQ(::write(fd, text, strlen(text)), ssize_t(strlen(text))); }

// Asks `request` with `typed` as the whole input (then end of input); returns the answers and
// everything the prompt wrote.
std::pair<std::optional<QJsonObject>, QString> askWithInput(const PromptRequest& request, const char* typed)
{
    int input[2];
    int output[2];
    if (::pipe(input) != 0 || ::pipe(output) != 0)
        return {};
    type(input[1], typed);
    ::close(input[1]);
    const std::optional<QJsonObject> answers = TerminalPrompt(input[0], output[1]).ask(request);
    const QString written = QString::fromUtf8(drain(output[0]));
    for (int fd : {input[0], output[0], output[1]})
        ::close(fd);
    return {answers, written};
}

bool echoes(int fd)
{
    termios settings{};
    return ::tcgetattr(fd, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
}

// Waits until the terminal's echo is as wanted; gives up after ten seconds so a broken prompt
// fails the test instead of hanging it.
void waitForEcho(int fd, bool wanted)
{
    for (int attempt = 0; attempt < 10'000 && echoes(fd) != wanted; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

}  // namespace

TEST(TerminalPrompt, EnterKeepsEveryValueOnlyShownFieldsAreAskedAndNoMeansNothing)
{
    const PromptRequest request = compressionSettingsView({}, 1);
    const auto [answers, written] = askWithInput(request, "\n\n\n\n\n");
    ASSERT_TRUE(answers);
    EXPECT_EQ(*answers, request.startingAnswers());
    EXPECT_TRUE(written.startsWith(u"Compress\nMode\n  * 1  To file size\n    2  Reduce by percent\n    3  By quality\n"
                                   "Choose 1-3 [1]: Size, MB or less [1]: "))
        << written.toStdString();
    EXPECT_FALSE(written.contains(u"Smaller by"));
    EXPECT_FALSE(written.contains(u"Quality ("));
    EXPECT_TRUE(written.endsWith(u"Compress image? [Y/n]: "));

    // Declining, or input ending before the question is answered, gives nothing.
    for (const char* typed : {"\n\n\n\nno\n", "3\n", ""})
        EXPECT_FALSE(askWithInput(request, typed).first) << typed;
}

TEST(TerminalPrompt, MenuNumbersValuesAndRetriesAfterAWrongAnswer)
{
    // Mode by number, a refused percent, then 30; "1600" is a size of its own; "heif" names HEIC.
    const auto [answers, written] = askWithInput(compressionSettingsView({}, 2), "2\n150\n30\n1600\nheif\nyes\n");
    ASSERT_TRUE(answers);
    CompressionSettings expected;
    expected.mode = CompressionSettings::Mode::reduceBy;
    expected.reducePercent = 30;
    expected.maxDimension = 1600;
    expected.format = CompressionSettings::Format::heic;
    EXPECT_EQ(CompressionSettings::fromJson(*answers), expected);
    EXPECT_TRUE(written.contains(u"Smaller by (1-99) [50]: Please enter a whole number from 1 to 99.\nSmaller by (1-99) [50]: "))
        << written.toStdString();
    EXPECT_TRUE(written.endsWith(u"Compress 2 images? [Y/n]: "));
}

TEST(TerminalPrompt, PasswordIsReadWithoutEchoAndEchoComesBack)
{
    int master = -1;
    int slave = -1;
    ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    const PromptRequest request{
        .title = QStringLiteral("Password"),
        .fields = {{.kind = PromptField::Kind::text, .key = QStringLiteral("name"), .label = QStringLiteral("Name"),
                    .value = QString()},
                   {.kind = PromptField::Kind::password, .key = QStringLiteral("password"),
                    .label = QStringLiteral("Password for the PDF"), .value = QString(), .required = true,
                    .confirm = true}},
        .confirmText = QStringLiteral("Protect"),
    };

    // Types each answer once the prompt is ready for it, as a person at the keyboard would.
    std::thread typist([&] {
        type(master, "Ann\n");
        waitForEcho(slave, false);
        // Typed while echo is off, every line stays unseen whenever it is read: a pair that
        // differs, then one that matches.
        type(master, "s3cret words\ns3cret wordz\ns3cret words\ns3cret words\n");
        waitForEcho(slave, true);
        type(master, "y\n");
    });
    const std::optional<QJsonObject> answers = TerminalPrompt(slave, slave).ask(request);
    typist.join();
    const QString screen = QString::fromUtf8(drain(master));

    ASSERT_TRUE(answers);
    EXPECT_EQ(answers->value(QStringLiteral("name")).toString(), u"Ann");
    EXPECT_EQ(answers->value(QStringLiteral("password")).toString(), u"s3cret words");
    EXPECT_TRUE(screen.contains(u"Ann")) << "ordinary answers are echoed";
    EXPECT_EQ(screen.count(u"Password for the PDF: "), 2) << screen.toStdString();
    EXPECT_EQ(screen.count(u"Password for the PDF, again: "), 2) << screen.toStdString();
    EXPECT_EQ(screen.count(u"The passwords don't match. Please try again."), 1) << screen.toStdString();
    EXPECT_FALSE(screen.contains(u"s3cret")) << screen.toStdString();
    EXPECT_TRUE(echoes(slave));
    ::close(master);
    ::close(slave);
}
