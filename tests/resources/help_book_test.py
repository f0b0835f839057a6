#!/usr/bin/env python3
"""Checks the help book against itself and against the windows and menus. Usage: help_book_test.py RESOURCES"""
import collections
import html.parser
import pathlib
import re
import sys
import unittest
import xml.etree.ElementTree as ET

RESOURCES = pathlib.Path(sys.argv.pop(1))
BOOK = RESOURCES / "help"


class Page(html.parser.HTMLParser):
    """Links, anchors and text of a page; faults in its nesting."""

    def __init__(self, file):
        super().__init__()
        self.links, self.anchors, self.text, self.open, self.faults = [], set(), "", [], []
        self.feed(file.read_text(encoding="utf-8"))
        self.faults += self.open

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.links += [values["href"]] if "href" in values else []
        self.anchors |= {values[name] for name in ("name", "id") if name in values and tag != "meta"}
        if tag not in ("meta", "link", "br", "img"):
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append("/" + tag)

    def handle_data(self, data):
        self.text += data + " "


PAGES = {file.name: Page(file) for file in BOOK.glob("*.html")}
PROJECT = ET.parse(BOOK / "lumacart.qhp")


def property_of(widget, name):
    found = widget.find(f"property[@name='{name}']")
    return None if found is None else "".join(found.itertext()).strip()


class Book(unittest.TestCase):
    def leads_somewhere(self, page, link):
        file, _, anchor = link.partition("#")
        target = file or page
        self.assertTrue((BOOK / target).is_file(), f"{page}: {link}")
        self.assertTrue(not anchor or anchor in PAGES[target].anchors, f"{page}: {link}")

    def test_every_link_leads_to_a_page_and_place(self):
        for name, page in PAGES.items():
            self.assertEqual(page.faults, [], name)
            for link in page.links:
                self.leads_somewhere(name, link)

    def test_contents_index_and_files_name_every_page(self):
        files = [element.text for element in PROJECT.iter("file")]
        self.assertEqual(sorted(files), sorted(f.name for f in BOOK.iterdir() if f.suffix != ".qhp"))
        self.assertEqual({section.get("ref") for section in PROJECT.iter("section")}, PAGES.keys())
        keywords = collections.Counter(keyword.get("name") for keyword in PROJECT.iter("keyword"))
        self.assertEqual([name for name, count in keywords.items() if count > 1], [], "a word leads to one page")
        for keyword in PROJECT.iter("keyword"):
            self.leads_somewhere("lumacart.qhp", keyword.get("ref"))

    def test_every_window_has_a_page(self):
        for file in (RESOURCES / "windows").glob("*.ui"):
            page = property_of(ET.parse(file).find("widget"), "helpPage")
            self.assertIn(page, PAGES, f"property helpPage of {file.name}")

    def test_every_key_of_the_menus_is_in_the_table(self):
        table = re.split(r"[\s,]+", PAGES["keyboard.html"].text)
        for file in (RESOURCES / "menus").glob("*.ui"):
            for action in ET.parse(file).iter("action"):
                key = property_of(action, "shortcut")
                self.assertTrue(key is None or key in table, f"{file.name}: {key}")


if __name__ == "__main__":
    unittest.main()
