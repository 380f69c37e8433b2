// Plays a video file over and over, without a gap at the seam.
#pragma once

#include <functional>
#include <QImage>
#include <stop_token>
#include <string>

namespace KeloViewer {

/// Takes each picture when it is due, and whether it is the first one of another round.
using ShowPicture = std::function<void(QImage picture, bool hasLooped)>;

/// Plays the file on this thread until it is told to stop, the pictures scaled to `size`. Returns
/// at once where the file is not a video.
void playOverAndOver(const std::stop_token& stop, const std::string& path, QSize size,
                     const ShowPicture& show);

} // namespace KeloViewer
