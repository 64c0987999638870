"""What others publish about countries: iso-codes, ICU and the metadata of python3-phonenumbers, as Debian has them."""

import ast
import ctypes
import glob
import json
import pathlib
import re

# Lesotho has a currency of its own; ICU prefers the South African one, which is legal tender there too.
CURRENCIES = {"LS": "LSL"}


def iso_codes(name):
    with open(f"/usr/share/iso-codes/json/iso_{name}.json", encoding="utf-8") as file:
        return json.load(file)[name]


class Icu:
    """The few functions of ICU that are needed. Their names end with ICU's version."""

    def __init__(self):
        path = sorted(glob.glob("/usr/lib/*/libicuuc.so.*"))[0]
        self._library = ctypes.CDLL(path)
        self._version = re.search(r"\.so\.(\d+)", path).group(1)

    def _text(self, name, *arguments):
        buffer = (ctypes.c_uint16 * 256)()
        status = ctypes.c_int(0)
        length = getattr(self._library, f"{name}_{self._version}")(*arguments, buffer, len(buffer), ctypes.byref(status))
        if status.value > 0:
            raise RuntimeError(f"{name}{arguments}: ICU's status is {status.value}")
        return bytes(memoryview(buffer).cast("B"))[:2 * length].decode("utf-16-le")

    def currency(self, country):
        """Returns the code of today's currency; empty for a country without one."""
        currency = self._text("ucurr_forLocale", f"und_{country}".encode())
        return "" if currency == "XXX" else currency

    def likely_locale(self, country):
        buffer = ctypes.create_string_buffer(160)
        status = ctypes.c_int(0)
        function = getattr(self._library, f"uloc_addLikelySubtags_{self._version}")
        function(f"und_{country}".encode(), buffer, len(buffer), ctypes.byref(status))
        return buffer.value

    def country_name(self, country, language):
        """Returns the name in a language such as "fr", or in English if ICU has no name in that language."""
        return self._text("uloc_getDisplayCountry", f"{language}_{country}".encode(), language.encode())

    def native_name(self, country):
        locale = self.likely_locale(country)
        return self._text("uloc_getDisplayCountry", locale, locale)


def calling_codes():
    """Returns the codes by country, without uninhabited countries and those that have no numbering plan."""
    source = pathlib.Path("/usr/lib/python3/dist-packages/phonenumbers/data/__init__.py").read_text(encoding="utf-8")
    table = re.search(r"^_COUNTRY_CODE_TO_REGION_CODE = (\{.*?\})$", source, re.M | re.S).group(1)
    return {region: code for code, regions in ast.literal_eval(table).items() for region in regions}


def countries():
    icu = Icu()
    calling = calling_codes()
    for row in sorted(iso_codes("3166-1"), key=lambda row: row["alpha_2"]):
        code = row["alpha_2"]
        yield {
            "alpha2": code,
            "alpha3": row["alpha_3"],
            "numeric": row["numeric"],
            "currency": CURRENCIES.get(code) or icu.currency(code),
            "calling_code": calling.get(code, 0),
            "name": row.get("common_name", row["name"]),
            "short_name": row["name"],
            "official_name": row.get("official_name", row["name"]),
            "native_name": icu.native_name(code),
        }
