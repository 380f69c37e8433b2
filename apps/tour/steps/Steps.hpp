#pragma once

#include "Tour.hpp"

namespace KeloTour {

// One function and one source file per subject. A new one is declared here, and called in main.
void tourTrust(Tour& tour);
void tourReading(Tour& tour);
void tourModels(Tour& tour);
void tourPaging(Tour& tour);
void tourRequests(Tour& tour);
void tourActing(Tour& tour);
void tourMedia(Tour& tour);
void tourFiles(Tour& tour);
void tourUploads(Tour& tour);
void tourObjectiveC(Tour& tour);
void tourSessions(Tour& tour);
void tourFailures(Tour& tour);

} // namespace KeloTour
