#!/usr/bin/env python3
"""Runs the tool as a designer would: the showcase in its forms, scripts played on it, stored documents, and documents
that are broken.

    check_qorl.py QORL SHOWCASE [unittest arguments]
"""
import json
import os
import re
import resource
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

from pictures import ROOT, check_picture

QORL = ""
SHOWCASE = Path()
HERE = Path(__file__).resolve().parent
# A program that runs into a limit says so at once; this only ends one that hangs.
HANGS_AFTER = 60
MOST_MEMORY_KB = 512 * 1024
MOST_SECONDS = 2


def run(*arguments, stdin=None, cwd=None):
    return subprocess.run([QORL, *map(str, arguments)], input=stdin, cwd=cwd, capture_output=True, text=True,
                          timeout=HANGS_AFTER)


def skin(body, head=""):
    return f'<?xml version="1.0" encoding="utf-8"?>\n<skin>\n{head}<templates>\n{body}\n</templates>\n</skin>\n'


def lying_png(width, height):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(b"\0" * 64)) + chunk(b"IEND", b""))


class InTemporaryFolder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="qorl-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def succeed(self, *arguments, **options):
        """What a run prints that must end well and tell no fault."""
        result = run(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def told_by(self, status, *arguments, **options):
        """What a run that ends so tells of faults."""
        result = run(*arguments, **options)
        self.assertEqual(result.returncode, status, result.stderr[-400:])
        return result.stderr

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path


class Showcase(InTemporaryFolder):
    def render(self, name, *arguments):
        picture = self.folder / name
        self.succeed("render", SHOWCASE / "skin.xml", "Panel", "-o", picture, *arguments)
        return picture

    def test_renders_in_both_looks_forms_and_scales(self):
        for name, options in (("light", []), ("twice", ["--scale", "2"]), ("dark", ["--condition", "DARK"]),
                              ("compact", ["--size", "860x520", "--condition", "COMPACT"]),
                              ("set", ["--set", "master=100"])):
            with self.subTest(name):
                reference = "docs/images/showcase.png" if name == "light" else f"tests/golden/showcase/{name}.png"
                check_picture(self, self.render(name + ".png", *options), reference)

    def test_the_skin_of_the_readme_looks_as_shown_there(self):
        readme = (ROOT / "README.md").read_text()
        self.write("skin.xml", re.search(r"```xml\n(.*?)```", readme, re.S)[1])
        self.succeed(*re.search(r"`build/dev/bin/qorl (render skin.xml .*?)`", readme)[1].split(), cwd=self.folder)
        check_picture(self, self.folder / "mixer.png", "docs/images/mixer.png")

    def test_passes_its_own_check(self):
        self.succeed("check", "--strict", SHOWCASE / "skin.xml")

    def test_plays_a_user_the_same_way_twice(self):
        script = HERE / "scripts" / "showcase.steps"
        outcomes = []
        for round_folder in ("first", "second"):
            folder = self.folder / round_folder
            folder.mkdir()
            self.succeed("drive", SHOWCASE / "skin.xml", "Panel", "--script", script, cwd=folder)
            outcomes.append({path.name: path.read_bytes() for path in folder.iterdir()})
        self.assertEqual(outcomes[0].keys(), {"before.png", "after.png", "after.txt"})
        self.assertEqual(outcomes[0], outcomes[1])
        check_picture(self, self.folder / "first" / "before.png", "docs/images/showcase.png")
        check_picture(self, self.folder / "first" / "after.png", "tests/golden/showcase/after.png")

    def test_tree_tells_class_rect_value_and_place(self):
        tree = self.succeed("tree", SHOWCASE / "skin.xml", "Panel")
        line = next(line for line in tree.splitlines() if '"cutoff"' in line)
        self.assertRegex(line, r'USlider "cutoff" 78,42 \d+x20 .*= "2400" @ .*templates/tone\.xml:\d+:\d+')


class Drive(InTemporaryFolder):
    SKIN = skin('<template name="T" size="0,0,200,100" style="frame">'
                '<valuedefine name="v" type="int" scope="global" min="0" max="10" default="5"/>'
                '<slider name="v" id="s" style="horizontal" size="0,0,100,20"/>'
                '<valuedefine name="ramp" type="int" scope="global" min="0" max="1000" default="0"/>'
                '<slider name="ramp" id="ramp" style="horizontal|ramp" size="0,60,200,20"/>'
                '<button name="b" id="b" titleNT="Go" size="0,30,60,22"/></template>')

    ENDLESS = "v" * 257

    def drive(self, script, status=0):
        """What is told of the faults of a script that ends with this status."""
        return self.told_by(status, "drive", self.write("skin.xml", self.SKIN), "T", "--script", "-", stdin=script)

    def test_failed_expectations_tell_both_sides_and_the_line(self):
        cases = {
            "\nexpect value v == 6\n": '-:2:1: error: expect value v == 6: expected 6, found 5\n',
            'expect text b == "Stop"\n': '-:1:1: error: expect text b == "Stop": expected "Stop", found "Go"\n',
            "expect focus b\n": '-:1:1: error: expect focus b: expected the focus there, found it on USlider "s" 0,0 100x20 '
                                '[shown attached focusable] = "5"\n',
            "expect visible nobody\n": '-:1:1: error: expect visible nobody: there is no view with the id or name '
                                       '"nobody"\n',
            "shot gone/x.png\n": 'qorl: gone/x.png: No such file or directory\n',
            "click nobody\n": '-:1:1: error: click nobody: there is no view with the id or name "nobody"\n',
            "press b\n": '-:1:1: error: press b: the mouse is still held and nothing else comes; '
                         'is a "release" missing?\n',
            f"set {self.ENDLESS} 5\n": f'-:1:1: error: set {self.ENDLESS} 5: no value of that name takes it\n',
            f"expect value {self.ENDLESS} == 5\n": f'-:1:1: error: expect value {self.ENDLESS} == 5: '
                                                    'there can be no value of that name\n',
        }
        for script, message in cases.items():
            with self.subTest(script=script):
                self.assertEqual(self.drive(script, status=1), message)

    def test_faults_of_the_script_have_line_and_column(self):
        cases = {
            "clik b": '1:1: error: "clik" is no step; there are click, press,',
            "click": "1:6: error: expected the id or name of a view",
            "drag s 1,1 2,2": '1:12: error: expected "->", not "2,2"',
            "wait soon": '1:6: error: expected milliseconds, not "soon"',
            'expect text b == "Go': "1:18: error: the quote that begins here has no end",
            "release now": '1:9: error: nothing may follow here, but "now" does',
            "wait nan": '1:6: error: expected milliseconds, not "nan"',
            "wait 1e10": "1:6: error: milliseconds are at most 1000000000",
            "drag s 1,1 -> 1,2000000000": "1:15: error: a place X,Y in the view has no number above 1000000",
            "\n\nhold Shift+Hyper": '3:6: error: "Hyper" is none of Shift, Ctrl, Alt, Meta',
        }
        for script, message in cases.items():
            with self.subTest(script=script):
                self.assertRegex(self.drive(script, status=1), "^-:" + re.escape(message))

    def test_keys_and_wheel_reach_the_focus_and_the_view(self):
        told = self.drive("click s\nexpect focus s\nset v 5\nkey Right Arrow\nexpect value v == 6\n"
                          "wheel s -1\nexpect value v == 5\nkey Home\nexpect value v == 10\n"
                          "key Shift+Right Arrow\nexpect value v == 10\nkey Shift+Tab\nexpect focus b\n")
        self.assertEqual(told, "")

    def test_held_keys_and_time_reach_the_control(self):
        drag = "set ramp 500\ndrag ramp 100,10 -> 140,10\nexpect value ramp == "
        told = self.drive("press ramp\nwait 499\nexpect value ramp == 10\nwait 501\nexpect value ramp == 120\nrelease\n"
                          f"{drag}714\nhold Shift\n{drag}521\nhold none\n{drag}714\n")
        self.assertEqual(told, "")


class Usage(InTemporaryFolder):
    def test_wrong_words_answer_two(self):
        for words in ([], ["paint"], ["render"], ["render", "a", "b", "c"], ["render", "a", "b", "--colour"],
                      ["render", "a", "b", "--size", "0x4"], ["render", "a", "b", "--scale", "99"], ["drive", "a", "b"],
                      ["document"], ["document", "dump"], ["document", "burn", "a"], ["document", "convert", "a"],
                      ["document", "convert", "a", "b", "--tag", "a b"],
                      ["document", "convert", "a", "b", "--tag", "\u00C4"],
                      ["objects", "dump", "a"], ["objects", "dump", "a", "--form", "round"],
                      ["objects", "burn", "a", "--form", "sized"]):
            with self.subTest(words=words):
                self.assertNotEqual(self.told_by(2, *words), "")

    def test_help_and_version_answer_zero(self):
        for words in (["--help"], ["--version"], ["render", "--help"], ["drive", "--help"], ["--man"],
                      ["--completion"]):
            with self.subTest(words=words):
                self.assertIn("qorl", self.succeed(*words))


class Json(InTemporaryFolder):
    def test_tree_has_every_view_of_the_text(self):
        words = ("tree", SHOWCASE / "skin.xml", "Panel")
        lines = []

        def collect(view, depth):
            lines.append("  " * depth + view["class"])
            for inner in view.get("views", []):
                collect(inner, depth + 1)
            return view

        window = collect(json.loads(self.succeed(*words, "--json")), 0)
        self.assertEqual(lines, [re.match(r" *\w+", line)[0] for line in self.succeed(*words).splitlines()])
        self.assertEqual(window["frame"][2:], [912, 540])
        self.assertEqual(window["views"][0]["source"]["line"], 25)
        self.assertEqual(list(window["views"][0]), ["class", "name", "title", "frame", "attach", "flags", "source",
                                                    "views"])

    def test_check_tells_the_same_faults_as_data(self):
        path = self.write("skin.xml", skin('<template name="T" size="0,0,9,9">\n<blink/>\n<view name="T"/></template>'))
        text, data = run("check", path), run("check", path, "--json")
        self.assertEqual((text.stdout, data.stderr), ("", ""))
        self.assertEqual((text.returncode, data.returncode), (1, 1))
        found = json.loads(data.stdout)["diagnostics"]
        self.assertEqual([f"{fault['file']}:{fault['line']}:{fault['column']}: {fault['severity']}: {fault['text']}"
                          for fault in found],
                         [line for line in text.stderr.splitlines() if not line.startswith(" ")])
        self.assertEqual({fault["severity"] for fault in found}, {"warning", "error"})

    def test_check_bounds_templates_that_hold_each_other(self):
        below = "".join(f'<template name="T{i}">{f"<view name={chr(34)}T{i + 1}{chr(34)}/>" * 10}</template>\n'
                        for i in range(5))
        path = self.write("skin.xml", skin(below + '<template name="T5"/>' +
                                           '<template name="Top"><view name="T0"/></template>\n' * 20))
        told = [line for line in self.told_by(1, "check", path).splitlines() if "are not checked" in line]
        self.assertEqual(len(told), 1)

    def test_check_tells_an_empty_list_for_what_is_right(self):
        self.assertEqual(self.succeed("check", "--json", SHOWCASE / "skin.xml"), '{"diagnostics":[]}\n')


def int32(*numbers):
    return b"".join(struct.pack("<I", number & 0xFFFFFFFF) for number in numbers)


def counted(text):
    return int32(len(text) + 1) + text.encode() + b"\0"


def marker(tag, name, version=0):
    return int32(tag) + counted(name) + struct.pack("<H", version)


# An integer "x" of 1 among attributes.
ENTRY = counted("x") + b"\1\0" + struct.pack("<q", 1)


class Documents(InTemporaryFolder):
    SETTINGS = ('<?xml version="1.0" encoding="utf-8"?>\n<Settings>\n'
                '<int name="i" value="-5"/>\n<float name="f" value="0.1"/>\n<float name="n" value="1e300"/>\n'
                '<string name="s" value="a"/>\n<string name="w" value="T\u00fcr" wide="true"/>\n'
                '<member name="m">\n<int name="x" value="1"/>\n</member>\n<bin name="b">\n00ff\n</bin>\n'
                '<list name="li" type="int">\n<item value="1"/>\n<item value="2"/>\n</list>\n'
                '<list name="lf" type="float">\n<item value="0.5"/>\n</list>\n'
                '<list name="ls" type="string">\n<item value="a"/>\n</list>\n'
                '<list name="ll" type="list">\n<item>\n<int name="x" value="2"/>\n</item>\n</list>\n'
                '<list name="lo" type="obj">\n<item value="7"/>\n<item value="7"/>\n</list>\n'
                '<obj name="o" ID="7"/>\n<obj name="gone" ID="9"/>\n'
                '<obj class="Unheard" ID="7">\n<obj name="self" ID="7"/>\n</obj>\n</Settings>\n')
    ATTRIBUTES = [
        {"key": "i", "kind": "int", "value": -5},
        {"key": "f", "kind": "float", "value": 0.1},
        {"key": "n", "kind": "float", "value": 1e300},
        {"key": "s", "kind": "string", "value": "a", "wide": False},
        {"key": "w", "kind": "string", "value": "T\u00fcr", "wide": True},
        {"key": "m", "kind": "attributes", "attributes": [{"key": "x", "kind": "int", "value": 1}]},
        {"key": "b", "kind": "binary", "hex": "00FF"},
        {"key": "li", "kind": "list", "of": "int", "value": [1, 2]},
        {"key": "lf", "kind": "list", "of": "float", "value": [0.5]},
        {"key": "ls", "kind": "list", "of": "string", "value": ["a"]},
        {"key": "ll", "kind": "list", "of": "attributes", "value": [{"attributes": [{"key": "x", "kind": "int", "value": 2}]}]},
        {"key": "lo", "kind": "list", "of": "object", "value": [
            {"kind": "object", "class": "Unheard", "id": 7, "attributes": [{"key": "self", "kind": "reference", "id": 7}]},
            {"kind": "reference", "id": 7}]},
        {"key": "o", "kind": "reference", "id": 7},
        {"key": "gone", "kind": "reference", "id": 9},
    ]

    def dump(self, path):
        return json.loads(self.succeed("document", "dump", path))

    def convert(self, *words):
        self.assertEqual(self.succeed("document", "convert", *words), "")

    def test_dump_has_every_kind_in_either_form_and_nothing_is_lost_between(self):
        source = self.write("settings.xml", self.SETTINGS)
        body, back, again = (self.folder / name for name in ("body", "back.xml", "again"))
        self.assertEqual(self.dump(source), {"tag": "Settings", "attributes": self.ATTRIBUTES})
        self.convert(source, body)
        self.assertEqual(self.dump(body), {"attributes": self.ATTRIBUTES})
        self.convert(body, back, "--tag", "Settings")
        self.assertEqual(self.dump(back), {"tag": "Settings", "attributes": self.ATTRIBUTES})
        self.convert(back, again)
        self.assertEqual(again.read_bytes(), body.read_bytes())

    def test_root_objects_stand_under_their_names(self):
        path = self.write("roots.xml", '<Doc><rootObjects><root name="main" ID="5"/>\n<root name="more">\n'
                          '<int name="x" value="1"/></root></rootObjects>\n<obj class="Unheard" ID="5"></obj></Doc>')
        self.assertEqual(self.dump(path), {"tag": "Doc", "attributes": [
            {"key": "main", "kind": "object", "class": "Unheard", "id": 5, "attributes": []},
            {"key": "more", "kind": "attributes", "attributes": [{"key": "x", "kind": "int", "value": 1}]}]})
        self.assertIn(f"{path}: warning: the root objects are plain entries in the binary form",
                      self.told_by(0, "document", "convert", path, self.folder / "body"))

    def test_documents_of_any_encoding_are_read(self):
        for encoding in ("windows-1250", "shift_jis", "nobody-knows"):
            path = self.write("old.xml", f'<?xml version="1.0" encoding="{encoding}"?>\n<Doc>\n<int name="i" value="1"/>\n</Doc>')
            self.assertEqual(self.dump(path), {"tag": "Doc", "attributes": [{"key": "i", "kind": "int", "value": 1}]})

    def test_objects_of_old_bodies_are_kept_whatever_their_class(self):
        def old(key, subkind, name):
            return counted(key) + b"\2\0" + subkind + counted(name) + int32(1) + ENTRY

        path = self.write("body", int32(2) + old("o", b"\x6C\0", "Unheard") + old("l", b"\x65\0" + int32(1), "CmString"))
        self.convert(path, self.folder / "new.xml")
        for one in (path, self.folder / "new.xml"):
            entries = self.dump(one)["attributes"]
            objects = [entries[0], *entries[1]["value"]]
            self.assertEqual([found["class"] for found in objects], ["Unheard", "CmString"])
            self.assertEqual([found["attributes"][0]["value"] for found in objects], [1, 1])

    def test_what_a_conversion_leaves_out_is_told(self):
        path = self.write("body", int32(3) + counted("long") + b"\x08\0" + counted("x" * 50000) +
                          counted("o") + b"\2\0\x6C\0" + int32(0, 0) + ENTRY)
        for words in (["dump", path], ["convert", path, self.folder / "new.xml"]):
            told = self.told_by(1, "document", *words)
            place = 4 + len(counted("long")) + 2 + len(counted("x" * 50000))
            self.assertIn(f'{path}:1:{place + 1}: warning: left out before byte {place}: a text of "long"', told)
            self.assertIn("an object without a class", told)
        self.assertIn(f"new.xml: is written without 2 parts of {path}", told)
        self.assertEqual(self.dump(self.folder / "new.xml")["attributes"], [{"key": "x", "kind": "int", "value": 1}])

    def test_a_tag_may_be_as_long_as_readers_take_it(self):
        path = self.write("body", int32(0))
        self.convert(path, self.folder / "new.xml", "--tag", "T" * 4096)
        self.assertEqual(self.dump(self.folder / "new.xml")["tag"], "T" * 4096)
        self.told_by(2, "document", "convert", path, "-", "--tag", "T" * 4097)

    def test_damaged_ones_are_refused_with_their_place(self):
        cases = {
            "xml": ('<?xml version="1.0"?>\n<Doc>\n<int name="x" value="1"/>\n</Dox>\n', ":4:1: error: "),
            "cut": (int32(2) + ENTRY, f":1:{5 + len(ENTRY)}: error: before byte {4 + len(ENTRY)}: "),
            "longer": (int32(1) + ENTRY + b"...", f":1:{5 + len(ENTRY)}: error: at byte {4 + len(ENTRY)}: "),
            "huge": (int32(0x7FFFFFFF), ":1:5: error: "),
            "empty": (b"", ":1:1: error: "),
        }
        for name, (content, place) in cases.items():
            with self.subTest(name):
                path = self.write(name, content)
                for words in (["dump", path], ["convert", path, self.folder / "out"]):
                    self.assertIn(str(path) + place, self.told_by(1, "document", *words))
        self.assertFalse((self.folder / "out").exists())

    def test_bodies_whose_count_looks_like_xml_are_bodies(self):
        for count in (60, 316, 572):
            data = self.dump(self.write("body", int32(count) + ENTRY * count))
            self.assertEqual(len(data["attributes"]), count)

    def test_nesting_100000_deep_is_refused(self):
        nested = b"".join(int32(1) + counted("x") + b"\2\0\6\0" for _ in range(100000))
        for name, content in (("xml", "<D>" + '<member name="x">' * 100000), ("body", nested)):
            self.told_by(1, "document", "dump", self.write(name, content))

    def test_a_converted_one_goes_to_standard_output_as_to_a_file(self):
        source = self.write("settings.xml", self.SETTINGS)
        body = self.folder / "body"
        self.convert(source, body)
        result = subprocess.run([QORL, "document", "convert", source, "-"], capture_output=True, check=True)
        self.assertEqual(result.stdout, body.read_bytes())

    def test_a_text_too_long_for_the_binary_form_leaves_no_file(self):
        path = self.write("long.xml", f'<D><string name="s">\n{"x" * 50001}\n</string></D>')
        self.assertIn("50000", self.told_by(1, "document", "convert", path, self.folder / "out"))
        self.assertFalse((self.folder / "out").exists())


class Objects(InTemporaryFolder):
    TEXT = marker(-1, "CmString")
    SIZED = marker(-2, "CmObject") + TEXT

    def dump(self, content, form, *options, status=0):
        result = run("objects", "dump", self.write("archive", content), "--form", form, *options)
        self.assertEqual(result.returncode, status, result.stderr)
        return json.loads(result.stdout or "null"), result.stderr

    @staticmethod
    def text(offset, number, value):
        return {"offset": offset, "version": 0, "kind": "object", "class": "CmString", "id": number,
                "attributes": [{"key": "s", "kind": "string", "value": value, "wide": False}]}

    def test_sized_archives_show_what_they_can_of_unknown_classes(self):
        content = (self.SIZED + int32(7) + counted("hi") +
                   marker(-2, "Base") + marker(-1, "Unheard", 7) + int32(2) + b"\1\xFF" +
                   int32(0x80000000 + 64, 1) + b"\7" + int32(0, 38, 0x80000013, 7) + counted("yo"))
        data, errors = self.dump(content, "sized")
        self.assertEqual(errors, "")
        why = 'class "Unheard" is not known here, and only a class can tell its fields'
        self.assertEqual(data, {"form": "sized", "objects": [
            self.text(0, 1, "hi"),
            {"offset": 49, "kind": "unread", "class": "Unheard", "known": False, "parents": ["Base"], "why": why,
             "length": 2, "hex": "01FF"},
            {"offset": 88, "kind": "unread", "class": "Unheard", "known": False, "why": why, "length": 1, "hex": "07"},
            {"offset": 97, "kind": "null"},
            {"offset": 101, "kind": "reference", "id": 1},
            self.text(105, 2, "yo")]})

    def test_compact_archives_end_at_an_unknown_class(self):
        data, errors = self.dump(self.TEXT + counted("hi") + int32(2) + marker(-1, "Unheard") + b"four", "compact", status=1)
        self.assertEqual(data["objects"][:2], [self.text(0, 1, "hi"), {"offset": 26, "kind": "reference", "id": 1}])
        self.assertEqual(data["objects"][2]["class"], "Unheard")
        self.assertIn(':1:31: error: at byte 30: class "Unheard" is not known here, and the compact form does not tell '
                      'where its objects end: the 4 bytes behind', errors)

    def test_objects_of_two_bodies_are_told_apart(self):
        def body(name, number, missing):
            return (int32(2) + counted("o") + b"\2\0\x14\0" + counted("Unheard") + struct.pack("<Q", number) +
                    int32(1) + counted("x") + b"\x08\0" + counted(name) +
                    counted("gone") + b"\2\0\x15\0" + struct.pack("<Q", missing))

        def attributes(name, number, missing):
            return [{"key": "o", "kind": "object", "class": "Unheard", "id": number, "attributes": [
                        {"key": "x", "kind": "string", "value": name, "wide": False}]},
                    {"key": "gone", "kind": "reference", "id": missing}]

        content = (marker(-1, "Attributes") + body("first", 7, 9) + int32(0x80000001) + body("second", 9, 7) + int32(2))
        data, errors = self.dump(content, "compact")
        self.assertEqual([one.get("attributes") for one in data["objects"]],
                         [attributes("first", 7, 9), attributes("second", 3, 4), None])
        self.assertEqual(data["objects"][2]["kind"], "reference")
        self.assertEqual(data["objects"][2]["id"], data["objects"][0]["id"])

    def test_attributes_that_hold_themselves_come_to_an_end(self):
        content = marker(-1, "Attributes") + int32(1) + counted("self") + b"\2\0\x08\0" + int32(2)
        data, _ = self.dump(content, "compact")
        self.assertEqual(data["objects"][0]["attributes"], [
            {"key": "self", "kind": "reference", "id": data["objects"][0]["id"]}])

    def test_contents_without_a_name_need_the_class(self):
        self.assertEqual(self.dump(counted("hi"), "sized", "--class", "CmString")[0],
                         {key: value for key, value in self.text(0, 1, "hi").items() if key not in ("offset", "version")})
        self.assertIn("Unheard", self.dump(counted("hi"), "sized", "--class", "Unheard", status=2)[1])
        self.assertIn(":1:", self.dump(b"\1", "sized", "--class", "CmString", status=1)[1])
        data, errors = self.dump(counted("hi") + b"more", "sized", "--class", "CmString", status=1)
        self.assertEqual(data["attributes"][0]["value"], "hi")
        self.assertIn(':1:8: error: at byte 7: the contents of class "CmString" end here, but 4 bytes follow', errors)
        errors = self.dump(int32(0) + b"\0\0" + int32(1) + marker(-1, "Un\x1Bheard"), "compact", "--class", "CmArray", status=1)[1]
        self.assertIn('an object within is of class "Un\\x1Bheard", which is not known here', errors)
        ring = marker(-1, "Attributes") + int32(1) + counted("self") + b"\2\0\x08\0" + int32(2)
        self.dump(int32(1) + counted("o") + b"\2\0\x08\0" + ring, "compact", "--class", "Attributes")

    def test_an_object_that_lacks_a_part_says_so(self):
        content = (marker(-1, "Attributes") + int32(2) + counted("o") + b"\2\0\x6C\0" + counted("Unheard") + int32(0) +
                   ENTRY)
        data, errors = self.dump(content, "compact", status=1)
        self.assertEqual([entry["key"] for entry in data["objects"][0]["attributes"]], ["x"])
        self.assertIn(':1:1: warning: at byte 0: an object of class "Unheard" within is left out', errors)

    def test_damaged_ones_are_refused_with_their_place(self):
        cases = [
            ("sized", self.SIZED + int32(7) + b"\3", ":1:1: error: "),
            ("sized", self.SIZED + int32(-1), ":1:1: error: at byte 0: a length below 0"),
            ("sized", int32(0, 77), ":1:5: error: at byte 4: an object that can't be read, or a reference"),
            ("sized", int32(-1, 0x7FFFFFFF), ":1:1: error: at byte 0: the archive ends"),
            ("sized", marker(-1, "Unheard") + int32(9) + b"cut", ':1:1: error: at byte 0: the archive ends in an object of '
                                                                 'class "Unheard"'),
            ("compact", int32(0, 77), ":1:5: error: at byte 4: "),
            ("compact", self.TEXT, ":1:1: error: "),
            ("compact", b"\0\0", ":1:1: error: at byte 0: the archive ends"),
        ]
        for form, content, message in cases:
            with self.subTest(content):
                self.assertIn(message, self.dump(content, form, status=1)[1])


class Manual(InTemporaryFolder):
    COMMANDS = ("render", "show", "check", "drive", "tree", "document", "objects")

    def test_man_page_tells_every_option_of_the_help(self):
        page = run("--man").stdout
        for command in self.COMMANDS:
            section = re.search(rf'^\.SS "{command} .*?(?=^\.S[SH] )', page, re.M | re.S)[0].replace("\\-", "-")
            options = re.findall(r"^  ((?:-\w, )?--\w+.*?)  ", run(command, "--help").stdout, re.M)
            self.assertEqual(re.findall(r"^\.B (-.*)", section, re.M), options)
            self.assertNotEqual(options, [])

    def test_man_page_is_clean_roff(self):
        result = subprocess.run(["groff", "-man", "-ww", "-z", "-Kutf8"], input=run("--man").stdout, capture_output=True,
                                text=True, timeout=HANGS_AFTER)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def complete(self, *words):
        """What bash offers for the last of the words."""
        script = run("--completion").stdout + 'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qorl; ' \
            'printf "%s\\n" "${COMPREPLY[@]}" | sort'
        result = subprocess.run(["bash", "-c", script, "qorl", "qorl", *words], cwd=self.folder, capture_output=True,
                                text=True, timeout=HANGS_AFTER)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout.split()

    def test_bash_completes_commands_options_files_and_templates(self):
        self.write("skin.xml", skin('<template name="One" size="0,0,9,9"/>\n<template size="0,0,9,9" name="Two"/>'))
        cases = [
            (["r"], ["render"]),
            ([""], sorted([*self.COMMANDS, "--help", "--version", "--man", "--completion"])),
            (["check", "--"], ["--condition", "--help", "--json", "--strict"]),
            (["tree", "sk"], ["skin.xml"]),
            (["check", "skin.xml", ""], ["skin.xml"]),
            (["tree", "skin.xml", ""], ["One", "Two"]),
            (["tree", "skin.xml", "T"], ["Two"]),
            (["drive", "skin.xml", "One", "--script", "s"], ["skin.xml"]),
            (["drive", "skin.xml", "One", "--size", "s"], []),
            (["document", "d"], ["dump"]),
            (["document", "convert", "sk"], ["skin.xml"]),
            (["objects", "dump", "skin.xml", "--f"], ["--form"]),
        ]
        for words, offered in cases:
            with self.subTest(words=words):
                self.assertEqual(sorted(self.complete(*words)), sorted(offered))


class Check(InTemporaryFolder):
    HALF_GOOD = '<template name="T" size="0,0,9,9">\n%s\n</template>'

    def test_each_kind_of_fault_is_told_and_reading_goes_on_past_it(self):
        cases = {
            '<bitmap name="b" path="b.png"/>': "5:1: error: <bitmap> can't stand here",
            "<blink/>": "5:1: warning: unknown element <blink>",
            '<label colour="red"/>': "5:1: warning: <label> has no attribute 'colour'",
            '<slider style="sideways"/>': "5:1: warning: <slider> knows no style 'sideways'",
            '<image bitmap="gone"/>': "5:1: warning: no bitmap 'gone'",
            '<view name="gone"/>': "5:1: warning: no template or view class 'gone'",
            '<label name="l" size="l.left,0,9,9"/>': "5:1: warning: size 'l.left,0,9,9' of <label>",
            '<mutable variable="a" setting="aa"/>': "5:1: error: the value 'aa' holds",
            '<view name="T"/>': "4:1: error: views stand more than 400 deep",
        }
        for body, finding in cases.items():
            with self.subTest(body):
                path = self.write("skin.xml", skin(self.HALF_GOOD % body + '\n<template name="Last"><behind/></template>'))
                result = run("check", path)
                lines = [line for line in result.stderr.splitlines() if not line.startswith(" ")]
                self.assertEqual(len(lines), 2, result.stderr)
                self.assertTrue(lines[0].startswith(f"{path}:{finding}"), lines[0])
                self.assertTrue(lines[1].startswith(f"{path}:7:23: warning: unknown element <behind>"), lines[1])
                self.assertEqual(result.returncode, 1 if ": error: " in finding else 0)
                self.assertEqual(run("check", "--strict", path).returncode, 1)

    def test_render_warns_of_what_fails_without_harm(self):
        for body, finding in {"<blink/>": "unknown element <blink>",
                              '<label name="l" size="l.left,0,9,9"/>': "size 'l.left,0,9,9' of <label>"}.items():
            with self.subTest(body):
                path = self.write("skin.xml", skin(self.HALF_GOOD % body))
                told = self.told_by(0, "render", path, "T", "-o", self.folder / "out.png")
                self.assertTrue(told.startswith(f"{path}:5:1: warning: {finding}"), told)
                self.assertEqual(told.count("\n"), 1)


class Values(InTemporaryFolder):
    def tree(self, values):
        path = self.write("skin.xml", skin('<template name="T" size="0,0,9,9"><slider name="gain" size="0,0,9,9"/>'
                                           '<edit name="name" size="0,0,9,9"/></template>'))
        return "tree", path, "T", "--values", self.write("values.txt", values)

    def test_a_file_gives_numbers_ranges_and_texts(self):
        tree = self.succeed(*self.tree('# levels\ngain = -3 in -20..20\nname = "Main"\n'))
        self.assertRegex(tree, r'"gain" .*= "-3" @ .*\n.*"name" .*= "Main" @')

    def test_faults_of_a_file_have_their_line(self):
        self.assertIn("values.txt:2:1: error: 'very' is neither a number nor a text in quotes",
                      self.told_by(1, *self.tree("gain = 5\nloud = very\n")))

    def test_a_setting_that_no_value_takes_is_told(self):
        self.assertEqual('qorl: no value takes "gain=loud"\n',
                         self.told_by(1, *self.tree("gain = 5\n"), "--set", "gain=loud"))


class BadInput(InTemporaryFolder):
    """Each of these is refused with file, line and column, by every command that reads a skin."""

    PLACE = re.compile(r"^[^\n]*?:\d+:\d+: error: ", re.M)

    def cheaply(self, *words):
        """Runs on what is bad, which must take little processor time and memory to find out."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        result = run(*words, stdin="")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not os.environ.get("QORL_SANITIZED"):
            seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            self.assertLessEqual(seconds, MOST_SECONDS, "seconds of processor time")
            # The largest of all children so far: an earlier one would have failed already.
            self.assertLessEqual(after.ru_maxrss, MOST_MEMORY_KB, "kB of memory")
        return result

    def refuse(self, document, *needles, name="skin.xml"):
        path = self.write(name, document)
        for words in (["render", path, "T", "-o", self.folder / "out.png"], ["check", path], ["tree", path, "T"],
                      ["drive", path, "T", "--script", "-"]):
            with self.subTest(words[0]):
                result = self.cheaply(*words)
                self.assertEqual(result.returncode, 1, result.stderr[-400:])
                self.assertRegex(result.stderr, self.PLACE)
                for needle in needles:
                    self.assertIn(needle, result.stderr)

    def test_what_breaks_a_rule_by_itself(self):
        template = '<template name="T" size="0,0,9,9">'
        cases = {
            "not well formed": ("<skin>\n <templates>\n</skin>\n", "skin.xml:3:"),
            "wrong encoding": (b'<?xml version="1.0" encoding="utf-8"?>\n<skin><info value="\xff\xfe"/></skin>', "skin.xml:2:"),
            "missing include": (skin(template + "</template>", '<header>\n<include file="gone.xml"/></header>\n'),
                                "skin.xml:4:", "gone.xml"),
            "for of two to the 31 rounds": (skin(template + '\n<for variable="[i]" range="0,2147483647">'
                                                 '<label titleNT="[i]" size="0,0,1,1"/></for></template>'), "skin.xml:5:"),
            "nesting 100000 deep": (skin(template + '<view size="0,0,9,9">' * 100000 + "</view>" * 100000 + "</template>"),),
            "more than 64 megabytes": (skin(template + "</template>\n<!-- " + "x" * (65 << 20) + " -->"), "skin.xml:1:1:", "64 MB"),
            "template that contains itself": (skin(template + '<view name="T"/></template>'), "skin.xml:4:"),
            "templates that contain each other": (skin(template + '<view name="U"/></template>\n<template name="U" '
                                                       'size="0,0,9,9"><view name="T"/></template>'),),
            "variable that contains its own name": (skin(template + '<mutable variable="a" setting="aa">'
                                                         '<label titleNT="banana" size="0,0,9,9"/></mutable></template>'),
                                                    "skin.xml:4:"),
            "variable with an empty name": (skin(template + '<for variable="" range="0,3">'
                                                 '<label titleNT="x" size="0,0,9,9"/></for></template>'), "skin.xml:4:"),
        }
        for what, (document, *needles) in cases.items():
            with self.subTest(what):
                self.refuse(document, *needles)

    def test_loop_of_includes(self):
        self.write("b.xml", '<skin><header><include file="skin.xml"/></header></skin>')
        self.refuse(skin('<template name="T" size="0,0,9,9"/>', '<header><include file="b.xml"/></header>\n'))

    def test_include_outside_of_the_folder(self):
        self.write("outside.xml", "<skin/>")
        self.refuse(skin('<template name="T" size="0,0,9,9"/>', '<header><include file="../outside.xml"/></header>\n'),
                    "skin.xml:3:9: ", name="inner/skin.xml")

    def test_bitmap_that_lies_about_its_size(self):
        kinds = ('<bitmap name="lie" path="lie.png"/>', '<section name="lie" path="lie.png" size="0,0,2,2"/>',
                 '<filmstrip name="lie" path="lie.png" framecount="2"/>')
        files = [(lying_png(100000, 100000), "the PNG says that it has 100000 x 100000 pixels; at most"),
                 (lying_png(16, 16), "Not enough image data"),
                 (lying_png(8000, 8000), "the PNG says that it has 8000 x 8000 pixels, which its 69 bytes cannot hold"),
                 (lying_png(4, 4)[:33] + b"\x52\0\0\0tEXt" +
                  bytes(64), "it ends within a chunk")]
        for content, why in files:
            self.write("lie.png", content)
            for kind in kinds:
                with self.subTest(why, kind=kind):
                    self.refuse(skin('<template name="T" size="0,0,9,9"><image bitmap="lie"/></template>',
                                     f"<resources>{kind}</resources>\n"), "skin.xml:3:12: error: bitmap 'lie.png': ", why)

    def test_sibling_expressions_that_fan_out(self):
        siblings = [f'<view name="v{i}" size="' + "+".join(f"v{i + 1}.{field}" for field in
                    ("left", "top", "right", "bottom", "width", "height") * 20) + ',0,1,1"/>' for i in range(10)]
        document = skin('<template name="T" size="0,0,9,9">' + "".join(siblings) +
                        '<view name="v10" size="1,1,1,1"/></template>')
        self.refuse(document)


if __name__ == "__main__":
    QORL, SHOWCASE = os.path.abspath(sys.argv[1]), Path(sys.argv[2]).resolve()
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
