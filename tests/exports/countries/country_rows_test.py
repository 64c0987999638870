"""country_rows_test.py SOURCE_FOLDER: compares the library's lists of countries with published data: Debian's
iso-codes (ISO 3166, ISO 4217), the table of countries of the time zone data, the locale definitions of the C library
(vehicle codes), the metadata of phonenumbers (calling codes), and ICU (currencies, native names)."""

import glob
import json
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(ROOT / "scripts"))
import iso_country_sources as sources
ROW = re.compile(r'^    (\d+) "(.*)"$', re.M)


def iso_codes(name):
    with open(f"/usr/share/iso-codes/json/iso_{name}.json", encoding="utf-8") as file:
        return json.load(file)[name]


def comparable(name):
    """Returns the sorted words of a name, so that "Virgin Islands, British" equals "British Virgin Islands"."""
    name = name.replace("&", "and").replace("’", "'").lower()
    return sorted(re.findall(r"[^\s,()]+", re.sub(r"\bst\b", "saint", name)))


def vehicles():
    """Returns vehicle codes by ISO 3166 code from the C library's locales."""
    codes = {}
    for path in glob.glob("/usr/share/i18n/locales/*"):
        values = dict(re.findall(r'^(country_ab2|country_car)\s+"([^"\n]+)"',
                                 pathlib.Path(path).read_text(encoding="utf-8", errors="replace"), re.M))
        if country := values.get("country_ab2"):
            codes.setdefault(country, set()).add(values.get("country_car"))
    return codes


ROWS = {int(number): text.replace('""', '"') for number, text in
        ROW.findall((ROOT / "src/exports/countries.rc").read_text(encoding="utf-8"))}
NAMES = [ROWS[number].split("=") for number in range(101, 359)]
COUNTRIES = [ROWS[number].split(":", 1) for number in range(400, 520) if number in ROWS]
VALUES = [(key, dict(pair.split("=") for pair in values.split(";"))) for key, values in COUNTRIES]
TODAY = {row["alpha_2"]: row for row in iso_codes("3166-1")}
FORMER = {row["alpha_2"]: row for row in iso_codes("3166-3")}
VEHICLES = vehicles()

# Vehicle codes that have changed and are out of date in the C library. For Cambodia, the C library returns the ISO
# code.
NEWER_VEHICLES = {"GB": "UK", "KG": "KG", "KH": "K", "MK": "NMK"}


# Native names that differ from ICU's, with the reason.
OTHER_NAMES = {
    "Ghana*2057": ("Republic of Ghana", "the official name"),
    "Bangladesh*1095": ("গণপ্রজাতন্ত্রী বাংলাদেশ", "the official name"),
    "Saint Lucia*2057": ("Saint Lucia", "ICU abbreviates"),
    "Saint Vincent and the Grenadines*2057": ("Saint Vincent and the Grenadines", "ICU abbreviates"),
    "Antigua and Barbuda*2057": ("Antigua and Barbuda", "ICU abbreviates"),
    "Federation of Saint Kitts and Nevis*2057": ("Saint Kitts and Nevis", "ICU abbreviates"),
    "Central African Republic*1078": ("Ködörösêse tî Bêafrîka", "in Sango, the country's other official language"),
    "Congo*1036": ("République du Congo", "the official name; ICU tells the two Congos apart by their capitals"),
    "Democratic Republic of the Congo*1036": ("République démocratique du Congo", "the official name, as above"),
    "Côte d'Ivoire*1036": ("Côte d'Ivoire", "with the apostrophe of keyboards, as people type it"),
    "Macao*5124": ("澳門", "traditional characters, as the region writes; ICU's name is simplified and has the status"),
    "Macao*2070": ("Macau", "ICU's name has the status as a region of China"),
    "Lao Peoples's Democratic Republic*????": ("ສາທາລະນະລັດ ປະຊາທິປະໄຕ ປະຊາຊົນລາວ", "the official name"),
    "Democratic People's Republic of Korea*1042": ("조선민주주의인민공화국", "its own name; ICU has the southern one"),
    "Republic of The Gambia*2057": ("The Gambia", "the article is part of the name"),
}


def names_of(code):
    """Returns all published names of a country."""
    row = TODAY.get(code) or FORMER[code]
    names = [row[kind] for kind in ("name", "common_name", "official_name") if kind in row]
    with open("/usr/share/zoneinfo/iso3166.tab", encoding="utf-8") as table:
        names += [line.rstrip("\n").split("\t")[1] for line in table if line.startswith(code + "\t")]
    names += [key.split("*")[0] for key, values in VALUES if values["ISO3166"].startswith(code)]
    return names


class CountryRows(unittest.TestCase):
    def test_shape(self):
        self.assertEqual((ROWS[359], ROWS[520]), ("-", "-"))
        self.assertEqual(len(COUNTRIES), 112)
        self.assertEqual([len(row) for row in NAMES], [3] * 208 + [2] * 50)
        self.assertEqual(set(ROWS), set(range(101, 360)) | {number for number in ROWS if 400 <= number <= 520})

    def test_every_code_of_today_is_there(self):
        """Each country has a row of names or a row of values, or is known to the system."""
        known = {row[0] for row in NAMES} | {values["ISO3166"][:2] for _, values in VALUES}
        self.assertEqual(set(TODAY) - known, {"FO", "GE", "HR", "SS"}, "known to the system only, or not at all")
        self.assertEqual(known - set(TODAY), {"AN", "CT", "YU", "ZR"})

    def test_names(self):
        for code, name, *_ in NAMES:
            published = [comparable(candidate) for candidate in names_of(code)]
            short = {"KR": "korea", "YU": "yugoslavia", "ZR": "zaire"}.get(code)
            self.assertTrue(comparable(name) in published or comparable(name) == [short], (code, name, names_of(code)))

    def test_codes_of_vehicles(self):
        checked = 0
        for code, _, *vehicle in NAMES:
            if vehicle and code in VEHICLES:
                checked += 1
                expected = {NEWER_VEHICLES[code]} if code in NEWER_VEHICLES else VEHICLES[code]
                self.assertIn(vehicle[0], expected, code)
        self.assertGreater(checked, 120)

    def test_values_of_countries(self):
        icu, calling = sources.Icu(), sources.calling_codes()
        money = {row["alpha_3"]: row["name"].lower() for row in iso_codes("4217")}
        others = {}
        for key, values in VALUES:
            code, letters = values["ISO3166"].split("/")
            self.assertEqual(TODAY[code]["alpha_3"], letters, key)
            self.assertEqual(int(values["CallingCode"]), calling[code], key)
            published = money[sources.CURRENCIES.get(code) or icu.currency(code)]
            currency = values["Currency"].lower()
            self.assertTrue(published == currency or published.endswith(" " + currency), (key, currency, published))
            self.assertRegex(values["LanguageCode"], rf"^\?$|^[a-z]+(-latn|-cyrl)?-({code.lower()}|cs)$", key)
            language = values["LanguageCode"].rpartition("-")[0]
            name = icu.country_name(code, language) if language else icu.native_name(code)
            if name != values["NativeName"]:
                others[key] = values["NativeName"]
        self.assertEqual(others, {key: name for key, (name, _) in OTHER_NAMES.items()})

    def test_table_of_vehicles(self):
        source = (ROOT / "src/locale/vehicle_codes.cpp").read_text(encoding="utf-8")
        table = dict(re.findall(r'\{"([A-Z]+)", "([^"]+)"\}', source))
        self.assertEqual(len(table), 227)
        by_vehicle = {}
        for country, codes in VEHICLES.items():
            for code in codes - {None}:
                by_vehicle.setdefault(code, set()).add(country)
        checked = 0
        for code, name in table.items():
            if code in by_vehicle:
                checked += 1
                self.assertTrue(any(comparable(name) in [comparable(candidate) for candidate in names_of(country)] or
                                    name == "Korea" for country in by_vehicle[code]), (code, name, by_vehicle[code]))
        self.assertGreater(checked, 120)


unittest.main()
