// A viewer of looping videos: the first draft of an app. Its parts are told in docs/viewer.md.
#include "Files.hpp"
#include "LoopSums.hpp"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QSocketNotifier>
#include <QThreadPool>

using namespace KeloViewer;

int main(int argc, char** argv) {
    qputenv("QT_QUICK_CONTROLS_STYLE", "Basic"); // the pages draw their own look
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName("kelo");
    QGuiApplication::setApplicationName("kelo-viewer");
    KeloAPI::Application::setBundleIdentifier("org.example.kelo-viewer");

    auto& mainQueue = KeloAPI::MainQueue::main();
    QSocketNotifier queue(mainQueue.fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(&queue, &QSocketNotifier::activated, [&] { mainQueue.drain(); });
    QObject::connect(&app, &QGuiApplication::aboutToQuit,
                     [] { LoopSums::shared().submitAtTheEnd(); });
    trimFiles();

    QQmlApplicationEngine engine;
    engine.addImageProvider("kelo", new PictureProvider);
    engine.load(QUrl("qrc:/KeloViewer/qml/Main.qml"));
    const int code = engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
    QThreadPool::globalInstance()->waitForDone(); // pictures that are still being read
    return code;
}
