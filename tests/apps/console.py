"""Runs a program at a terminal of its own, as a person would."""

import os
import pty
import select
import signal
import termios
import time


class Console:
    """The program reads from and writes to a pseudo-terminal; `output` is all it has shown."""

    def __init__(self, arguments, environment, columns=0):
        self.output = ""
        self.child, self.terminal = pty.fork()
        if self.child == 0:
            try:
                termios.tcsetwinsize(0, (24, columns))
                os.execve(arguments[0], arguments, environment)
            finally:
                os._exit(127)

    def _read(self, seconds):
        if not select.select([self.terminal], [], [], seconds)[0]:
            return False
        try:
            data = os.read(self.terminal, 65536)
        except OSError:  # the program has closed the terminal
            return False
        self.output += data.decode("utf-8", "replace")
        return data != b""

    def expect(self, text):
        """Waits until the program shows the text."""
        deadline = time.monotonic() + 20
        while text not in self.output:
            if time.monotonic() > deadline or (not self._read(1) and self._ended()):
                raise AssertionError(f"{text!r} is not in {self.output!r}")

    def _ended(self):
        return os.waitid(os.P_PID, self.child, os.WEXITED | os.WNOHANG | os.WNOWAIT) is not None

    def type(self, text):
        os.write(self.terminal, text.encode())

    def answer(self, question, text, hidden=False):
        self.expect(question)
        if hidden:
            self.expect_echo(False)
        self.type(text)

    def echoes(self):
        return bool(termios.tcgetattr(self.terminal)[3] & termios.ECHO)

    def expect_echo(self, wanted):
        deadline = time.monotonic() + 20
        while self.echoes() != wanted:
            if time.monotonic() > deadline:
                raise AssertionError(f"echo is {not wanted}")
            time.sleep(0.01)

    def finish(self):
        """The exit code; -N for death by signal N."""
        deadline = time.monotonic() + 20
        while not self._ended():
            self._read(0.05)
            if time.monotonic() > deadline:
                os.kill(self.child, signal.SIGKILL)
        while self._read(0.05):
            pass
        status = os.waitpid(self.child, 0)[1]
        os.close(self.terminal)
        return os.waitstatus_to_exitcode(status)
