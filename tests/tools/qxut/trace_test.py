"""trace_test.py PROGRAM QXUT: tests `qxut trace` with a program that runs jobs on a pool. Linux only."""

import json
import os
import subprocess
import sys

PROGRAM = sys.argv.pop(1)

import commands


class TraceCommands(commands.CommandTest):
    def setUp(self):
        super().setUp()
        self.home = self.folder / "home"
        self.file = self.folder / "a.trace"
        self.environment = dict(os.environ, QXPLATFORM_HOME=str(self.home))

    def qxut(self, *arguments, code=0):
        done = subprocess.run([*commands.COMMAND, "trace", *map(str, arguments)], capture_output=True,
                              encoding="utf-8", env=self.environment)
        self.assertEqual(done.returncode, code, done.stdout + done.stderr)
        return done.stdout if code == 0 else done.stderr

    def convert(self, code=0):
        output = self.folder / "a.json"
        message = self.qxut("convert", self.file, "-o", output, code=code)
        return json.loads(output.read_text())["traceEvents"], message

    def test_a_session(self):
        self.assertIn("no trace", self.qxut("stop", code=1))
        self.qxut("start", self.file)
        self.assertIn("already", self.qxut("start", self.folder / "b.trace", code=5))
        program = subprocess.Popen([PROGRAM, "100000"], stdout=subprocess.DEVNULL, env=self.environment)
        self.assertEqual(program.wait(), 0)
        self.assertIn(str(self.file), self.qxut("stop"))
        events, _ = self.convert()
        by_phase = {phase: [event for event in events if event["ph"] == phase] for phase in "MXi"}
        self.assertEqual(len(events), sum(map(len, by_phase.values())))
        lanes = {event["tid"]: event["args"]["name"] for event in by_phase["M"] if event["name"] == "thread_name"}
        self.assertEqual({name.split("::")[1] for name in lanes.values()}, {"primes"})
        self.assertEqual(len(by_phase["X"]), 64)
        for span in by_phase["X"]:
            self.assertEqual((span["name"], span["pid"], span["args"].get("unfinished")), ("slice", program.pid, None))
            self.assertGreater(span["dur"], 0)
        for lane in lanes:  # each lane has its beginning, its jobs one after the other, and its end
            own = [event for event in events if event["tid"] == lane and event["ph"] != "M"]
            self.assertEqual((own[0]["name"], own[-1]["name"]), ("starting", "ending, result=0"))
            for one, other in zip(own, own[1:]):
                self.assertGreaterEqual(other["ts"], one["ts"] + one.get("dur", 0) - 0.001)

        data = self.file.read_bytes()
        self.file.write_bytes(data[:-5])  # the last chunk is cut
        self.assertIn("1 damaged", self.convert(code=4)[1])
        self.file.write_bytes(data[:-20] + b"\xff" + data[-19:])
        self.assertIn("damaged", self.convert(code=4)[1])
        self.file.write_bytes(b"x" + data)
        self.assertIn("is not a trace", self.qxut("convert", self.file, code=4))


if __name__ == "__main__":
    commands.main()
