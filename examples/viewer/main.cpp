// A viewer of looping videos: the first draft of an app. Its parts are told in docs/viewer.md.
#include "Loops.hpp"
#include "RemoteFile.hpp"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QSocketNotifier>
#include <QTimer>

int main(int argc, char** argv) {
    qputenv("QT_QUICK_CONTROLS_STYLE", "Basic"); // the pages draw their own look
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName("kelo");
    QGuiApplication::setApplicationName("kelo-viewer");
    KeloAPI::Application::setBundleIdentifier("org.example.kelo-viewer");

    auto& mainQueue = KeloAPI::MainQueue::main();
    QSocketNotifier queue(mainQueue.fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(&queue, &QSocketNotifier::activated, [&] { mainQueue.drain(); });

    QTimer submitting;
    QObject::connect(&submitting, &QTimer::timeout, &Loops::submit);
    submitting.start(std::chrono::seconds(30));
    QObject::connect(&app, &QGuiApplication::aboutToQuit, &Loops::submitAtTheEnd);

    RemoteFile::trim();
    QQmlApplicationEngine engine;
    engine.load(QUrl("qrc:/KeloViewer/qml/Main.qml"));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
