// All public headers among macros that hosts may have defined before them. The standard library's
// own headers come first: whether they stand these macros is not this library's affair.
#include <algorithm>
#include <array>
#include <chrono>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

// Systems and their compilers.
#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define small char
#define near
#define far
#define interface struct
#define IN
#define OUT
#define major(x) x
#define minor(x) x
#undef linux
#define linux 1
#undef unix
#define unix 1
// Build switches and logging.
#define DEBUG 1
#define NDEBUG 1
#define ERROR 0
#define INFO 1
#define TRUE 1
#define FALSE 0
#define check(x) x
#define verify(x) x
#define assert(x) x
// Toolkits.
#define emit
#define slots
#define signals public
#define foreach(a, b) for (a : b)
#define forever for (;;)
#define Yes 1
#define No 0
#define YES 1
#define NO 0
#define nil 0
#define None 0L
#define True 1
#define False 0
#define Bool int
#define Always 2
#define Success 0
#define Status int
#define Unsorted 0
#define CurrentTime 0L
// Windows.
#define ABSOLUTE 1
#define ALTERNATE 1
#define APIENTRY
#define CALLBACK
#define CONST const
#define DELETE (0x00010000L)
#define DIFFERENCE 11
#define DOMAIN 1
#define FAR
#define IGNORE 0
#define INFINITE 0xFFFFFFFF
#define NEAR
#define NO_ERROR 0L
#define OPAQUE 2
#define OPTIONAL
#define OVERFLOW 3
#define PURE = 0
#define RELATIVE 2
#define STRICT 1
#define THIS void
#define TRANSPARENT 1
#define UNDERFLOW 4
#define VOID void
#define WINAPI
#define AddJob AddJobA
#define CreateFile CreateFileA
#define CreateMutex CreateMutexA
#define DeleteFile DeleteFileA
#define DispatchMessage DispatchMessageA
#define GetClassName GetClassNameA
#define GetCurrentTime() 0
#define GetMessage GetMessageA
#define GetObject GetObjectA
#define GetUserName GetUserNameA
#define LoadImage LoadImageA
#define PostMessage PostMessageA
#define ReportEvent ReportEventA
#define SendMessage SendMessageA
#define StartService StartServiceA
#define Yield()
#define cdecl
#define pascal
#define hyper long long

#include <KeloAPI/KeloAPI.hpp>

// They are left as they were found.
static_assert(Success == 0 && DELETE == 0x00010000L);

// What a host does without our names that are macros here.
static_assert(KeloAPI::deleteMethod != KeloAPI::Method::POST);
bool brought(const KeloAPI::MeResult& result) {
    return result.success() != nullptr;
}
