"""Tests the filters for dates and times against Python's own modules."""

import datetime
import email.utils
import json
import random
import re

import commands


class DateCommands(commands.CommandTest):
    def date(self, *arguments, text="", code=0, out=""):
        done = self.run_qxut("date", *arguments, code=code, stdin=text.encode(), out=out.encode())
        return done.decode().replace("\r\n", "\n")

    def test_parse_of_a_locale(self):
        german = ("parse", "--locale", "0x407")
        self.assertEqual(self.date(*german, text="31.12.2018 23:59\n10.12.2018\n2018-02-03"),
                         "2018-12-31 23:59:00\n2018-12-10 00:00:00\n2018-02-03 00:00:00\n")
        self.assertEqual(self.date(*german, "--expand-year", "--mark-no-time", text="1.2.29"), "2029-02-01 --:--:--\n")
        self.assertIn("'12.3.'", self.date(*german, "--report-default", text="12.3.", code=4, out="\n"))
        self.assertEqual(self.date(*german, "--zero-missing", text="12.3.\n31.2.2018"),
                         "0000-03-12 00:00:00\n2018-02-31 00:00:00\n")
        self.assertEqual(self.date(*german, "--time-only", text="12:30\n12:05:12"),
                         "0000-00-00 12:30:--\n0000-00-00 12:05:12\n")
        self.assertEqual(self.date("parse", text=""), "")
        self.assertRegex(self.date("parse", text="\n"), r"^20\d\d-\d\d-\d\d \d\d:\d\d:\d\d\n$")

    def test_parse_of_machine_forms(self):
        """Random moments in zones of whole minutes, formatted by Python."""
        numbers = random.Random(3)
        lines, expected = [], []
        for _ in range(200):
            zone = datetime.timezone(datetime.timedelta(minutes=numbers.randrange(-720, 721)))
            moment = datetime.datetime(1970, 1, 1, tzinfo=zone) + datetime.timedelta(seconds=numbers.randrange(1 << 32))
            lines += [moment.isoformat(), email.utils.format_datetime(moment), moment.strftime("%Y%m%d%H%M%S")]
            utc = moment.astimezone(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M:%S")
            expected += [utc, utc, moment.strftime("%Y-%m-%d %H:%M:%S")]
        self.assertEqual(self.date("parse", "--machine", text="\n".join(lines)).splitlines(), expected)

    def test_what_is_no_date_is_named(self):
        self.assertEqual(self.date("parse", "--machine", text="20180203\nno\x1b[31m\nx", code=4,
                                   out="2018-02-03 00:00:00\n\n\n"),
                         "qxut: line 2: 'no\\x1B[31m' is not a date\nqxut: line 3: 'x' is not a date\n")
        file = self.folder / "dates"
        file.write_text("20181231\n20181331\n")
        done = self.run_qxut("date", "parse", "--machine", str(file), code=4, out=b"2018-12-31 00:00:00\n\n")
        self.assertIn(f"{file}: line 2: '20181331'", done.decode())
        for line in ("never", "2018020", "20181331", "20180230", "2018020324", "2018-02-03", "20180203x"):
            self.assertIn(f"'{line}' is not", self.date("format", text=line, code=4, out="\n"))

    def test_json(self):
        self.assertEqual(json.loads(self.date("parse", "--machine", "--json", text="20180203")), [
            {"input": "20180203", "result": "2018-02-03 00:00:00"}])
        self.date("parse", "--machine", "--json", text="\u00e4", code=4,
                  out='[\n  {\n    "input": "\u00e4",\n    "result": null\n  }\n]\n')
        self.assertEqual(json.loads(self.date("format", "--json", text="")), [])

    def test_format_comes_back(self):
        """In any user locale, the output must contain the parts of the date."""
        file = self.folder / "dates"
        file.write_bytes(b"\xef\xbb\xbf20181231235958\r\n20181231\r\n")
        moment, day = self.date("format", str(file)).splitlines()
        self.assertTrue({"31", "12", "2018"} <= set(re.findall(r"\d+", day)), day)
        self.assertTrue(moment.startswith(day + " "), moment)
        self.assertTrue({"59", "58"} <= set(re.findall(r"\d+", moment)), moment)

    def test_wrong_use(self):
        self.date(code=2)
        self.date("parse", str(self.folder / "no file"), code=3)
        self.assertIn("not text", self.date("parse", text="1\0", code=4))


if __name__ == "__main__":
    commands.main()
