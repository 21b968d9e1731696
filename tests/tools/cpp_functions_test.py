"""Feeds source text to tools/cpp_functions.py: which functions it finds, and how long they are."""
import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../../tools"))
import cpp_functions

ROWS = [
    ("one line", "int f() { return 1; }", [("f", 1)]),
    ("several lines", "int f()\n{\n    if (a) {\n    }\n}\nint g();\n", [("f", 4)]),
    ("in a class", "namespace n {\nclass API A : public B {\npublic:\n    void f() const {}\n"
     "    int a{1};\n    ~A() {\n    }\n};\n}", [("f", 1), ("~A", 2)]),
    ("a constructor", "A::A(int n) : a_{n}, b_(n), c_{n} {\n}\nvoid f() {}", [("A", 2), ("f", 1)]),
    ("no function", "enum class E { a };\nint a[] = {f()};\nconst std::map<int, int> m{{1, 2}};", []),
    ("operators", "bool A::operator==(const A& o) const {}\nA& A::operator=(A a) {}\n",
     [("operator==", 1), ("operator=", 1)]),
    ("templates", "template <class T, class = If<T>> T f(T t = {}) {\n}", [("f", 2)]),
    ("a lambda belongs to its function", "void f() {\n    g([] {\n    });\n}", [("f", 4)]),
    ("braces in literals", "void f() { g('{', \"}\\\"{\", R\"({)\"); /* } */ // }\n}\nint g() {}",
     [("f", 2), ("g", 1)]),
    ("a test", "TEST_F(A, b) {\n}", [("TEST_F", 2)]),
]


class CppFunctions(unittest.TestCase):
    def test_functions_and_their_lines(self):
        for name, text, expected in ROWS:
            with self.subTest(name):
                found = cpp_functions.functions(text)
                self.assertEqual([(f.name, f.lines) for f in found], expected)


if __name__ == "__main__":
    unittest.main()
