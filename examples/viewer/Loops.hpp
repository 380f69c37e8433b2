// How often each video has come round on this device: kept in the settings until it is submitted.
#pragma once

#include <QString>

/// Counts a round of a post's video.
void countLoop(const QString& postId);

/// Submits one record a post. What is submitted is forgotten, whatever becomes of it. Does nothing
/// while the service cannot be reached.
void submitLoops();

/// Submits, and runs the main queue for a moment until the records are out.
void submitLoopsAtTheEnd();
