// A host with a Qt event loop: a notifier watches the main queue's descriptor beside the host's own
// sources (here a timer), and drains the queue when it is readable.
#include "ExampleHost.hpp"

#include <iostream>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

using namespace KeloAPI;

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ExampleHost::use();
    QSocketNotifier queue(MainQueue::main().fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(&queue, &QSocketNotifier::activated, [] { MainQueue::main().drain(); });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [] {}); // here the host would draw its next frame
    timer.start(100);
    bool ok = false;
    MeEndpoint::create()->get([&](const MeResult& result) {
        ok = result.success() != nullptr;
        std::cout << (ok ? "Signed in as " + result.success()->user->username.value_or("?")
                         : result.error()->localizedDescription())
                  << '\n';
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    return ok ? 0 : 1;
}
