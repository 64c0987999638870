"""country_test.py COMMAND...: tests `qxut country` and `qxut language`. COMMAND starts the program."""

import json
import pathlib
import sys

import commands

sys.path.insert(0, str(pathlib.Path(__file__).parents[3] / "scripts"))
import iso_country_sources as sources


class CountryCommands(commands.CommandTest):
    def qxut(self, *arguments, code=0):
        return self.run_qxut(*arguments, code=code).decode().replace("\r\n", "\n")

    def test_country(self):
        ghana = ("name = Ghana\nofficial-name = Republic of Ghana\nnative-name = Gaana\niso3166 = GH\nalpha-3 = GHA\n"
                 "numeric = 288\nlcid = 2057\ncalling-code = 233\ncurrency-code = GHS\ncurrency = cedi\n"
                 "code-page = 1252\n")
        self.assertEqual(self.qxut("country", "gh"), ghana)
        self.assertEqual(json.loads(self.qxut("country", "Österreich", "--json")),
                         {"name": "Austria", "native-name": "Österreich", "iso3166": "AT", "lcid": 3079,
                          "calling-code": 43, "currency": "€", "code-page": 1252})
        unknown = self.qxut("country", "aq")
        self.assertIn("iso3166 = AQ\n", unknown)
        self.assertNotIn("calling-code", unknown, "what isn't known is left out")
        self.assertIn("name = Estonia\n", self.qxut("country", "233"), "a code of ISO 3166 first")
        self.assertIn("name = Germany\n", self.qxut("country", "+49"), "a calling code")
        self.assertIn("name = Germany\n", self.qxut("country", "Deutschland"))
        self.assertEqual(self.qxut("country", "GH", "GH"), ghana + "\n" + ghana)
        self.assertIn("unknown country 'Atl\\x1Bantis'", self.qxut("country", "Atl\x1bantis", code=1))

    def test_all_codes(self):
        """Compares every country, found by each of its codes, with published data."""
        countries = list(sources.countries())
        self.assertEqual(len(countries), 249)
        keys = {"name": "name", "official-name": "official_name", "native-name": "native_name", "iso3166": "alpha2",
                "alpha-3": "alpha3", "numeric": "numeric", "calling-code": "calling_code", "currency-code": "currency"}
        for kind in ("alpha2", "alpha3", "numeric", "name", "short_name", "official_name"):
            lines = self.qxut("country", "--json", *(country[kind] for country in countries)).splitlines()
            self.assertEqual(len(lines), 249)
            for country, line in zip(countries, lines):
                told = json.loads(line)
                expected = {key: country[name] for key, name in keys.items() if country[name]}
                self.assertEqual({key: told[key] for key in keys if key in told}, expected)
        self.assertIn(b"unknown country 'XK'", self.run_qxut("country", "DE", "XK", code=1))

    def test_list(self):
        keys = self.qxut("country").splitlines()
        self.assertIn("Germany*1031", keys)
        self.assertIn("Côte d'Ivoire*1036", keys)
        self.assertEqual(json.loads(self.qxut("country", "--json")), keys)

    def test_language(self):
        self.assertEqual(self.qxut("language", "de-AT"), "3079\n")
        self.assertEqual(self.qxut("language", "de"), "7\n")
        self.assertEqual(json.loads(self.qxut("language", "de-AT", "--json")), {"language": "de-AT", "lcid": 3079})
        self.assertIn("unknown language 'xx'", self.qxut("language", "xx", code=1))
        self.assertIn("name is required", self.qxut("language", code=2))


commands.main()
