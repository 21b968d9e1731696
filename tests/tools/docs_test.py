"""Holds the documents to the tree: folders, pages, and links."""
import os
import re
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


def documents():
    for folder, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if name != "build" and not name.startswith(".")]
        for name in names:
            if name.endswith(".md"):
                yield os.path.relpath(os.path.join(folder, name), ROOT)


class Documents(unittest.TestCase):
    def test_the_architecture_lists_the_folders_in_their_order(self):
        layers = re.findall(r"^layer (\S+)", read("tools/layers.txt"), re.MULTILINE)
        listed = re.findall(r"^\| `([^`]+)` \|", read("docs/architecture.md"), re.MULTILINE)
        self.assertEqual(listed, layers)

    def test_every_folder_of_the_tree_is_in_the_architecture(self):
        text = read("docs/architecture.md")
        for name in sorted(os.listdir(ROOT)):
            if os.path.isdir(os.path.join(ROOT, name)) and name not in ("build", "cutroom.project"):
                if not name.startswith("."):
                    self.assertRegex(text, rf"`{re.escape(name)}[/`]", name)

    def test_every_format_is_listed(self):
        index = read("docs/formats/README.md")
        for name in os.listdir(os.path.join(ROOT, "docs/formats")):
            if name != "README.md":
                self.assertIn(f"]({name})", index)

    def test_every_link_leads_somewhere(self):
        checked = 0
        for path in documents():
            # Code is no place for links.
            text = re.sub(r"```.*?```|`[^`]*`", "", read(path), flags=re.DOTALL)
            for target in re.findall(r"\]\(([^)#\s]+)[^)]*\)", text):
                if "://" not in target:
                    checked += 1
                    whole = os.path.join(ROOT, os.path.dirname(path), target)
                    self.assertTrue(os.path.exists(whole), f"{path}: {target}")
        self.assertGreater(checked, 10)

    def test_every_command_that_is_named_exists(self):
        for path in documents():
            for tool in re.findall(r"`(?:\./)?(tools/[\w.]+|check|cutroom)\b", read(path)):
                self.assertTrue(os.path.exists(os.path.join(ROOT, tool)), f"{path}: {tool}")


if __name__ == "__main__":
    unittest.main()
