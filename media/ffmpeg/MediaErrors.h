#pragma once

#include "operations/OperationError.h"

namespace wendrel::media {

// The sentences media operations fail with, in one place so every entry words them alike.
OperationError cantReadMedia();           // "Can't read this file": not media, damaged, empty
OperationError unsupportedAudioFormat();  // the audio is in a codec this computer can't decode
OperationError unsupportedVideoFormat();  // the same for the picture
OperationError noAudioInFile();           // "No audio in this file"
OperationError noVideoInFile();           // "No video in this file"
// The result couldn't be written: the disk is full or the encoder refused; `reason` is the
// library's or system's own wording, shown after a colon.
OperationError cantSaveMedia(const QString& reason = {});

// User-facing text of the media layer.
QString mediaText(const char* text);

}  // namespace wendrel::media
