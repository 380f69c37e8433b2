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

#include "all_headers.inc"
