#include "MediaErrors.h"

#include <QCoreApplication>

namespace wendrel::media {

QString mediaText(const char* text) { return QCoreApplication::translate("MediaOperations", text); }

OperationError cantReadMedia() { return OperationError(mediaText("Can't read this file")); }
OperationError unsupportedAudioFormat() { return OperationError(mediaText("Unsupported audio format")); }
OperationError unsupportedVideoFormat() { return OperationError(mediaText("Unsupported video format")); }
OperationError noAudioInFile() { return OperationError(mediaText("No audio in this file")); }
OperationError noVideoInFile() { return OperationError(mediaText("No video in this file")); }

OperationError cantSaveMedia(const QString& reason)
{
    return OperationError::withReason(mediaText("Couldn't save the result"), reason);
}

}  // namespace wendrel::media
