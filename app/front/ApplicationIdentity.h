#pragma once

#include <QCoreApplication>

namespace wendrel {

// Names the settings, state and cache folders are found by; set before anything reads them.
inline void setApplicationIdentity()
{
    QCoreApplication::setApplicationName(QStringLiteral("Wendrel"));
    QCoreApplication::setOrganizationName(QStringLiteral("Wendrel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(WENDREL_VERSION));
}

}  // namespace wendrel
