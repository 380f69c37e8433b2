#include "steps/Steps.hpp"
#include "TourHost.hpp"

#include <cstdlib>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    using namespace KeloTour;
    if (argc != 2 || argv[1][0] == '-') {
        std::cerr << "kelo-tour: give the HOST:PORT of a running kelo-service\n";
        return 2;
    }
    TourHost::instance().host = argv[1];
    TourHost::instance().sessionKey = "kelo-development-session";
    traceRequests();
    Tour tour;
    tourTrust(tour);
    tourReading(tour);
    tourModels(tour);
    tourPaging(tour);
    tourRequests(tour);
    tourActing(tour);
    tourMedia(tour);
    tourFiles(tour);
    tourUploads(tour);
    tourObjectiveC(tour);
    tourSessions(tour);
    tourFailures(tour);
    return tour.finish() ? EXIT_SUCCESS : EXIT_FAILURE;
}
