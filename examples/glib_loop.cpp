// A host with a GLib main loop, as desktop programs have it: the loop watches the main queue's
// descriptor beside the host's own sources (here a timer) and drains the queue when it is readable.
#include "ExampleHost.hpp"

#include <glib-unix.h>

#include <iostream>
#include <memory>

using namespace KeloAPI;

namespace {

gboolean drain(gint, GIOCondition, gpointer) {
    MainQueue::main().drain();
    return G_SOURCE_CONTINUE;
}

gboolean tick(gpointer) {
    return G_SOURCE_CONTINUE; // here the host would draw its next frame
}

struct UnrefLoop {
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
};

} // namespace

int main() {
    ExampleHost::use();
    const std::unique_ptr<GMainLoop, UnrefLoop> loop(g_main_loop_new(nullptr, FALSE));
    const guint queue = g_unix_fd_add(MainQueue::main().fileDescriptor(), G_IO_IN, &drain, nullptr);
    const guint timer = g_timeout_add(100, &tick, nullptr);
    bool ok = false;
    MeEndpoint::create()->get([&](const MeResult& result) {
        ok = result.success() != nullptr;
        std::cout << (ok ? "Signed in as " + result.success()->user->username.value_or("?")
                         : result.error()->localizedDescription())
                  << '\n';
        g_main_loop_quit(loop.get());
    });
    g_main_loop_run(loop.get());
    g_source_remove(timer);
    g_source_remove(queue);
    return ok ? 0 : 1;
}
