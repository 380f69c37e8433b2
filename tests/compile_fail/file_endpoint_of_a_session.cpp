// expect: no matching|too few arguments|could not convert|no known conversion
#include <KeloAPI/files/FileEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return FileEndpoint::create(session);
}
#else
auto make(const std::shared_ptr<FileManager>& manager) {
    return FileEndpoint::create("https://media.example/a.mp4", manager);
}
#endif
