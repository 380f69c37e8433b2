#include "Terminal.hpp"

#include "Color.hpp"
#include "Text.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace KeloHost::Terminal {

namespace {

// Read by the signal handler; written with no question open.
termios settingsBefore;
volatile std::sig_atomic_t typingIsHidden = 0;
volatile std::sig_atomic_t questionIsOpen = 0;
volatile std::sig_atomic_t wasInterrupted = 0;
volatile std::sig_atomic_t lineIsWrittenOver = 0;
int interruptions[2] = {-1, -1};

constexpr char clearLine[] = "\r\x1b[J";
constexpr std::size_t clearLineSize = sizeof clearLine - 1;

void hideTyping() {
    if (tcgetattr(STDIN_FILENO, &settingsBefore) != 0) {
        return;
    }
    typingIsHidden = 1;
    termios hidden = settingsBefore;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    hidden.c_lflag |= ECHONL;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
}

void showTyping() {
    if (typingIsHidden != 0) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &settingsBefore);
        typingIsHidden = 0;
    }
}

std::optional<std::size_t> columnsOf(int file) {
    winsize size{};
    if (ioctl(file, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return std::nullopt;
    }
    return size.ws_col;
}

/// What comes next does not stand behind the "^C" of a terminal. Only what a signal handler may do.
void leaveLine() {
    if (lineIsWrittenOver != 0) {
        [[maybe_unused]] const auto written = write(STDERR_FILENO, clearLine, clearLineSize);
    } else if (isatty(STDERR_FILENO) != 0) {
        [[maybe_unused]] const auto written = write(STDERR_FILENO, "\n", 1);
    }
}

extern "C" void endBySignal(int number) {
    showTyping();
    leaveLine();
    _exit(128 + number);
}

extern "C" void noteInterruption(int number) {
    if (questionIsOpen != 0 || wasInterrupted != 0) {
        endBySignal(number);
    }
    wasInterrupted = 1;
    const int error = errno;
    leaveLine();
    [[maybe_unused]] const auto written = write(interruptions[1], "", 1);
    errno = error;
}

} // namespace

std::optional<std::size_t> columns() {
    return columnsOf(STDOUT_FILENO);
}

std::optional<std::size_t> errorColumns() {
    return columnsOf(STDERR_FILENO);
}

bool isDumb() {
    const char* kind = std::getenv("TERM");
    const std::string_view name = kind == nullptr ? "" : kind;
    return name.empty() || name == "dumb";
}

void writeOver(const std::string& text) {
    lineIsWrittenOver = 1;
    std::cerr << clearLine << text << std::flush;
    lineIsWrittenOver = text.empty() ? 0 : 1;
}

void say(const std::string& text) {
    std::cerr << printable(text) << '\n';
}

void complain(const std::string& text) {
    std::cerr << styled("kelo:", Style::Red, Stream::Errors) << ' ' << printable(text) << '\n';
}

std::optional<std::string> ask(const std::string& question) {
    questionIsOpen = 1; // who sees the question may interrupt it
    std::cerr << question << std::flush;
    auto line = inputLine();
    questionIsOpen = 0;
    if (!line) {
        std::cerr << '\n';
    }
    return line;
}

std::optional<std::string> askHidden(const std::string& question) {
    hideTyping();
    auto line = ask(question);
    showTyping();
    return line;
}

std::optional<std::string> inputLine() {
    std::string line;
    return std::getline(std::cin, line) ? std::optional(std::move(line)) : std::nullopt;
}

std::vector<std::string> inputLines() {
    std::vector<std::string> lines;
    while (auto line = inputLine()) {
        lines.push_back(*std::move(line));
    }
    std::cin.clear(); // a terminal can be asked on
    return lines;
}

int catchInterruption() {
    struct sigaction before {};
    sigaction(SIGINT, nullptr, &before);
    if (before.sa_handler == SIG_IGN || pipe2(interruptions, O_CLOEXEC) != 0) {
        return -1;
    }
    struct sigaction action {};
    action.sa_handler = noteInterruption;
    // What the other threads are in the middle of goes on.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    return interruptions[0];
}

void endOnSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        // A shell that runs the program in the background has it ignore Ctrl-C.
        if (before.sa_handler == SIG_DFL) {
            struct sigaction action {};
            action.sa_handler = endBySignal;
            sigaction(number, &action, nullptr);
        }
    }
}

} // namespace KeloHost::Terminal
