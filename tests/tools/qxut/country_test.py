"""country_test.py COMMAND...: tests `qxut country` and `qxut language`. COMMAND starts the program."""

import json

import commands


class CountryCommands(commands.CommandTest):
    def qxut(self, *arguments, code=0):
        return self.run_qxut(*arguments, code=code).decode().replace("\r\n", "\n")

    def test_country(self):
        self.assertEqual(self.qxut("country", "Republic of Ghana"),
                         "name = Ghana\nnative-name = Republic of Ghana\niso3166 = GHA\nlcid = 2057\n"
                         "calling-code = 233\ncurrency = cedi\ncode-page = 1252\n")
        self.assertEqual(json.loads(self.qxut("country", "Österreich", "--json")),
                         {"name": "Austria", "native-name": "Österreich", "iso3166": "AT", "lcid": 3079,
                          "calling-code": 43, "currency": "€", "code-page": 1252})
        self.assertEqual(self.qxut("country", "aq"), "name = Antarctica\n", "what isn't known is left out")
        self.assertIn("unknown country 'Atl\\x1Bantis'", self.qxut("country", "Atl\x1bantis", code=1))

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
