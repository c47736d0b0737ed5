#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace wendrel {

// How an operation fails: one short sentence the user can act on ("Can't read this image").
// Library errors are caught where the library is called and rethrown as this type.
class OperationError : public std::exception {
public:
    explicit OperationError(QString message)
        : m_message(std::move(message)), m_utf8(m_message.toUtf8())
    {
    }

    // The sentence, then the system's own reason after a colon when it gave one:
    // "Couldn't save the image: No space left on device".
    static OperationError withReason(const QString& sentence, const QString& reason)
    {
        return OperationError(reason.isEmpty() ? sentence : sentence + QStringLiteral(": ") + reason);
    }

    const QString& message() const noexcept { return m_message; }
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_message;
    QByteArray m_utf8;
};

// Thrown by OperationContext::throwIfCancelled() once the user has cancelled the job.
class OperationCancelled : public OperationError {
public:
    OperationCancelled();
};

}  // namespace wendrel
