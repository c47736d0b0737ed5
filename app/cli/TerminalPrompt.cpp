#include "TerminalPrompt.h"

#include "operations/prompt/PromptValues.h"

#include <QCoreApplication>
#include <QDir>

#include <cerrno>
#include <csignal>
#include <iterator>
#include <termios.h>

namespace wendrel {

namespace {

QString translate(const char* text) { return QCoreApplication::translate("CommandLine", text); }

// The terminal as it was before echo went off, for a signal that ends the process meanwhile.
termios savedTerminal{};
volatile std::sig_atomic_t savedTerminalFd = -1;

extern "C" void restoreTerminalAndDie(int signal)
{
    if (savedTerminalFd >= 0)
        tcsetattr(savedTerminalFd, TCSANOW, &savedTerminal);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Turns echo off for its lifetime; the line's Enter still shows. Ctrl+C or a termination
// meanwhile gives the terminal back its echo before the process ends.
class EchoOff {
public:
    explicit EchoOff(int fd) : m_fd(fd)
    {
        if (tcgetattr(fd, &savedTerminal) != 0) {
            m_fd = -1;
            return;
        }
        savedTerminalFd = fd;
        struct sigaction action = {};
        action.sa_handler = restoreTerminalAndDie;
        sigemptyset(&action.sa_mask);
        for (size_t index = 0; index < std::size(signals); ++index)
            sigaction(signals[index], &action, &m_previous[index]);

        termios quiet = savedTerminal;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        quiet.c_lflag |= ECHONL;
        tcsetattr(fd, TCSANOW, &quiet);
    }

    ~EchoOff()
    {
        if (m_fd < 0)
            return;
        tcsetattr(m_fd, TCSANOW, &savedTerminal);
        savedTerminalFd = -1;
        for (size_t index = 0; index < std::size(signals); ++index)
            sigaction(signals[index], &m_previous[index], nullptr);
    }

    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    static constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    int m_fd;
    struct sigaction m_previous[std::size(signals)] = {};
};

// A path typed at the terminal, as the shell would have read it: "~" is the home folder, and
// a relative path starts in the current folder.
QString typedPath(const QString& text)
{
    QString path = text.trimmed();
    if (path == u"~" || path.startsWith(QStringLiteral("~/")))
        path = QDir::homePath() + path.mid(1);
    if (path.isEmpty())
        return path;
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

// A choice's menu, the current value marked, and the question under it.
QString choiceQuestion(const PromptField& field, const QJsonValue& current)
{
    QString text = field.label + u'\n';
    qsizetype currentNumber = 0;
    for (qsizetype index = 0; index < field.choices.size(); ++index) {
        const bool isCurrent = field.choices[index].value == current;
        if (isCurrent)
            currentNumber = index + 1;
        text += QStringLiteral("  %1 %2  %3\n")
                    .arg(QChar(isCurrent ? u'*' : u' '))
                    .arg(index + 1)
                    .arg(field.choices[index].title);
    }
    const QString range = QStringLiteral("1-%1").arg(field.choices.size());
    const QString keep = currentNumber > 0 ? QString::number(currentNumber) : choiceTitle(field, current);
    if (field.acceptsOtherNumbers)
        return text + translate("Choose %1, or type a number of %2 [%3]: ").arg(range, field.unit, keep);
    return text + translate("Choose %1 [%2]: ").arg(range, keep);
}

QString question(const PromptField& field, const QJsonValue& current)
{
    const QString now = plainValue(field, current);
    switch (field.kind) {
    case PromptField::Kind::choice:
        return choiceQuestion(field, current);
    case PromptField::Kind::number:
        return QStringLiteral("%1, %2 [%3]: ").arg(field.label, field.unit, now);
    case PromptField::Kind::slider:
        return QStringLiteral("%1 (%2-%3) [%4]: ")
            .arg(field.label, displayNumber(field.minimum), displayNumber(field.maximum), now);
    case PromptField::Kind::toggle:
        return QStringLiteral("%1 [%2]: ").arg(field.label, current.toBool() ? QStringLiteral("Y/n") : QStringLiteral("y/N"));
    case PromptField::Kind::password:
        return field.label + QStringLiteral(": ");
    case PromptField::Kind::text:
    case PromptField::Kind::folder:
        return now.isEmpty() ? field.label + QStringLiteral(": ") : QStringLiteral("%1 [%2]: ").arg(field.label, now);
    }
    return {};
}

// A menu number picks that choice; anything else is read as the field's value.
std::optional<QJsonValue> readAnswer(const PromptField& field, const QString& line)
{
    if (field.kind == PromptField::Kind::choice) {
        bool isNumber = false;
        const int number = line.trimmed().toInt(&isNumber);
        if (isNumber && number >= 1 && number <= field.choices.size())
            return field.choices[number - 1].value;
    }
    if (field.kind == PromptField::Kind::folder)
        return readFieldValue(field, typedPath(line));
    return readFieldValue(field, line);
}

}  // namespace

TerminalPrompt::TerminalPrompt(int inputFd, int outputFd) : m_input(inputFd), m_output(outputFd) {}

std::optional<QJsonObject> TerminalPrompt::ask(const PromptRequest& request)
{
    write(request.title + u'\n');
    if (!request.message.isEmpty())
        write(request.message + u'\n');

    QJsonObject answers = request.startingAnswers();
    for (const PromptField& field : request.fields) {
        if (!request.isShown(field, answers))
            continue;
        const std::optional<QJsonValue> answer = askField(field, answers.value(field.key));
        if (!answer)
            return std::nullopt;
        answers.insert(field.key, *answer);
    }

    for (;;) {
        write(translate("%1? [Y/n]: ").arg(request.confirmText));
        const std::optional<QString> line = readLine(true);
        if (!line)
            return std::nullopt;
        if (const std::optional<QJsonValue> yes = readFieldValue({.kind = PromptField::Kind::toggle}, *line))
            return yes->toBool() ? std::optional(answers) : std::nullopt;
        if (line->trimmed().isEmpty())
            return answers;
        write(translate("Please answer yes or no.\n"));
    }
}

std::optional<QJsonValue> TerminalPrompt::askField(const PromptField& field, const QJsonValue& current)
{
    for (;;) {
        if (const QString caption = captionFor(field, current); !caption.isEmpty())
            write(QStringLiteral("  ") + caption + u'\n');
        write(question(field, current));
        const bool isPassword = field.kind == PromptField::Kind::password;
        const std::optional<QString> line = readLine(!isPassword);
        if (!line)
            return std::nullopt;
        // Enter keeps the value; for a password it means no password, which the field judges.
        if (line->trimmed().isEmpty() && !isPassword)
            return current;
        if (const std::optional<QJsonValue> value = readAnswer(field, *line)) {
            if (!isPassword || !field.confirm)
                return value;
            // Typed blind, a slip goes unseen: the same again, or both are asked anew.
            write(translate("%1, again: ").arg(field.label));
            const std::optional<QString> again = readLine(false);
            if (!again)
                return std::nullopt;
            if (*again == *line)
                return value;
            write(translate("The passwords don't match. Please try again.\n"));
            continue;
        }
        write(translate("Please enter %1.\n").arg(acceptedValues(field)));
    }
}

std::optional<QString> TerminalPrompt::readLine(bool echo)
{
    std::optional<EchoOff> quiet;
    if (!echo)
        quiet.emplace(m_input);
    // A byte at a time: what follows the line stays unread for the next question.
    QByteArray line;
    char byte = 0;
    for (;;) {
        const ssize_t count = ::read(m_input, &byte, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return line.isEmpty() ? std::nullopt : std::optional(QString::fromUtf8(line));
        if (byte == '\n')
            break;
        line.append(byte);
    }
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

void TerminalPrompt::write(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(m_output, bytes.constData() + written, size_t(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        written += count;
    }
}

}  // namespace wendrel
