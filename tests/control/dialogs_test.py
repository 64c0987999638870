"""dialogs_test.py CONTROL_LIBRARY [EMULATOR] LENGTHY_PEER: lengthy operations on a pseudo-terminal and elsewhere."""

import fcntl
import os
import pty
import re
import signal
import struct
import subprocess
import sys
import termios
import time
import unittest

LIBRARY, *PEER = sys.argv[1:]
ON_WINDOWS = LIBRARY.endswith(".dll")
DEFAULT = {**os.environ, "TERM": "xterm"}


def screen(output):
    """Returns the lines that a terminal shows after this output."""
    lines, row, column = [""], 0, 0
    for move, up, text in re.findall(r"(\r|\n|\x1b\[J|\x1b\[0m|\x1b\[(\d+)A)|([^\r\n\x1b]+)", output.decode()):
        if text:
            lines[row] = lines[row][:column].ljust(column) + text + lines[row][column + len(text):]
            column += len(text)
        elif move == "\r":
            column = 0
        elif move == "\n":
            row += 1
            lines += [""] * (row + 1 - len(lines))
        elif up:
            row -= int(up)
            assert row >= 0, "above the first line"
        elif move.endswith("J"):
            lines[row:] = [lines[row][:column]]
    return [line for line in lines if line]


class OnTerminal:
    """The peer as the leader of a terminal's session, driven step by step."""

    def __init__(self, columns=60, rows=24, environment=None, blocked=()):
        self.terminal, theirs = pty.openpty()
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

        def prepare():
            os.setsid()
            fcntl.ioctl(2, termios.TIOCSCTTY, 0)
            signal.pthread_sigmask(signal.SIG_BLOCK, blocked)

        self.process = subprocess.Popen(PEER, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=theirs,
                                        env=environment or DEFAULT, preexec_fn=prepare)
        os.close(theirs)
        os.set_blocking(self.terminal, False)
        self.output = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.kill()
        self.process.wait()
        if self.terminal is not None:
            os.close(self.terminal)

    def do(self, *commands):
        """Executes commands and returns the last answer."""
        for command in commands:
            self.process.stdin.write(command.encode() + b"\n")
            self.process.stdin.flush()
            answer = self.process.stdout.readline().decode().strip()
        return answer

    def shown(self):
        try:
            while part := os.read(self.terminal, 65536):
                self.output += part
        except BlockingIOError:
            pass
        return screen(self.output)

    def press_control_c(self):
        """The terminal sends the signal before it shows the key, but the process may handle it later."""
        os.write(self.terminal, b"\x03")

    def until(self, command, answer):
        deadline = time.monotonic() + 10
        while self.do(command) != answer:
            if time.monotonic() > deadline:
                raise AssertionError(f"{command}: {self.do(command)} instead of {answer}")
            time.sleep(0.005)


@unittest.skipIf(ON_WINDOWS, "a terminal of the other system isn't at hand")
class Terminal(unittest.TestCase):
    def test_drawing(self):
        with OnTerminal() as peer:
            peer.do("open Report", "percent 50")
            bar = "  [" + 15 * "#" + 15 * "-" + "] 50 %  Ctrl+C stops it"
            self.assertEqual(peer.shown(), ["Report", "  working", bar])
            peer.do("text " + "\u6f22" * 100 + "\x1b[2J\x9b1A", "percent 400")
            shown = peer.shown()
            self.assertEqual(shown[1:3], ["  working", "  " + "\u6f22" * 28], "wide characters, cut before the last column")
            self.assertIn("] 100 %", shown[3])
            peer.do("text a\tb\x1b[2J\u0085\x7f.so")
            self.assertEqual(peer.shown()[2], "  a?b?[2J??.so", "control characters don't reach the terminal")
            peer.do("open Inner", "text " + "x" * 4000)
            self.assertEqual(peer.shown()[0], "Inner", "the newest operation is shown alone")
            peer.do("end")
            self.assertEqual(peer.shown()[0], "Report")
            peer.do("end")
            self.assertEqual(peer.shown(), [])

    def test_small_terminals(self):
        for columns, rows in ((1, 1), (20, 3), (31, 5), (4000, 2000)):
            with OnTerminal(columns, rows) as peer:
                peer.do("open " + "T" * 300, "text " + "x" * 4000, "percent 7")
                shown = peer.shown()
                self.assertIn(" 7 %", shown[-1])
                self.assertLessEqual(max(map(len, shown)), min(max(columns, 10), 160))
                self.assertLessEqual(len(shown), max(rows - 1, 1))
                peer.do("end")
                self.assertEqual(peer.shown(), [])

    def test_control_c_aborts_and_then_belongs_to_the_program_again(self):
        with OnTerminal() as peer:
            self.assertEqual(peer.do("own", "open Report", "check"), "0 check")
            peer.press_control_c()
            peer.until("check", "1 check")
            self.assertIn("stopping", (peer.do("percent 1"), peer.shown())[1][-1])
            self.assertEqual(peer.do("open Next", "check"), "0 check", "an abort is that of its operation")
            self.assertEqual(peer.do("end", "check"), "1 check")
            self.assertEqual(peer.do("end", "count"), "0 count")
            peer.press_control_c()
            peer.until("count", "1 count")
            # A handler that is installed meanwhile stays.
            self.assertEqual(peer.do("open Report", "own", "end", "raise", "count"), "2 count")
        with OnTerminal() as peer:
            peer.do("open Report", "end")
            peer.press_control_c()
            self.assertEqual(peer.process.wait(10), -signal.SIGINT)

    def test_control_c_while_the_signal_is_blocked(self):
        with OnTerminal(blocked=[signal.SIGINT]) as peer:
            peer.do("open Report")
            peer.press_control_c()
            peer.until("check", "1 check")

    def test_children_leave_the_dialog_alone(self):
        with OnTerminal() as peer:
            self.assertEqual(peer.do("open Report", "fork"), f"{int(signal.SIGINT)} fork", "ended by its own signal")
            self.assertEqual(peer.do("check"), "0 check")
            self.assertNotIn("child", "".join(peer.shown()))

    def test_terminals_that_stop_or_close(self):
        with OnTerminal() as peer:
            peer.do("open Report")
            termios.tcflow(peer.terminal, termios.TCOOFF)
            begin = time.monotonic()
            peer.do("percent 1", "percent 2")
            self.assertLess(time.monotonic() - begin, 5, "output that nobody takes is dropped")
            termios.tcflow(peer.terminal, termios.TCOON)
            peer.do("percent 3")
            self.assertEqual(len(peer.shown()), 3)
        with OnTerminal(blocked=[signal.SIGHUP]) as peer:
            peer.do("open Report")
            os.close(peer.terminal)
            peer.terminal = None
            self.assertEqual(peer.do("percent 1", "text x", "check", "end"), "end")


class Elsewhere(unittest.TestCase):
    def run_peer(self, *commands, stderr=subprocess.PIPE):
        done = subprocess.run(PEER, input="".join(command + "\n" for command in commands).encode(), stdout=subprocess.PIPE,
                              stderr=stderr, check=True, timeout=60)
        return done.stdout.decode().split(), (done.stderr or b"").decode()

    @unittest.skipIf(ON_WINDOWS, "windows shows a dialog")
    def test_each_new_text_is_a_line(self):
        commands = ("open Report", "percent 5", "text a\tb.so", "text a\tb.so", "raise", "check")
        code = subprocess.run(PEER, input="\n".join(commands[:5]).encode(), stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode
        self.assertEqual(code, -signal.SIGINT, "the signal keeps its effect")
        answers, lines = self.run_peer("own", *commands)
        self.assertEqual(lines, "Report\nworking\nworking a b.so\n")
        self.assertEqual(answers[-2:], ["0", "check"])

    @unittest.skipIf(ON_WINDOWS, "windows has neither")
    def test_pipes_that_are_full_or_closed(self):
        for close in (True, False):
            ours, theirs = os.pipe()
            if close:
                os.close(ours)
            else:
                os.set_blocking(theirs, False)
                try:
                    while os.write(theirs, b"x" * 4096):
                        pass
                except BlockingIOError:
                    os.set_blocking(theirs, True)
            answers, _ = self.run_peer("open Report", "text x", "end", stderr=theirs)
            self.assertEqual(answers, ["open", "text", "end"])

    @unittest.skipUnless(ON_WINDOWS, "only windows has windows")
    def test_window(self):
        answers, lines = self.run_peer("open Report", "percent 50", "check", "cancel Report", "check", "end",
                                       "cancel Report", "open Next", "check", "end")
        self.assertEqual(lines, "")
        self.assertEqual(" ".join(answers), "open percent 0 check 1 cancel 1 check end 0 cancel open 0 check end")

    @unittest.skipIf(ON_WINDOWS, "there the library contains its runtime")
    def test_nothing_is_allocated_and_no_stream_is_used(self):
        listing = subprocess.run(["readelf", "--dyn-syms", "-W", LIBRARY], check=True, capture_output=True, text=True).stdout
        needed = {name for name in re.findall(r" UND (\w+)", listing) if not name.startswith("__asan_")}
        self.assertIn("sigaction", needed)
        self.assertEqual({name for name in needed if re.search(r"alloc|^free$|^_Zn|^_Zd|print|^f?(put|write)|std(in|out|err)$",
                                                               name)} - {"write"}, set())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
