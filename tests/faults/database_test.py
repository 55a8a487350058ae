"""Databases that are damaged or not databases at all, and scripts that fail or are huge."""

import sqlite3

import support
from support import kd_db

QUERY = "SELECT * FROM kept"


class NoDatabaseTest(support.FaultTest):
    def test_a_file_that_is_not_a_database_is_not_changed(self):
        contents = {"text": b"This is no database.\n" * 100, "zeros": bytes(5000),
                    "only the mark": b"SQLite format 3\0", "bad page size": b"SQLite format 3\0\xff\xff" + bytes(4000)}
        no_database = self.folder / "data" / "none.db"
        for kind, bytes_of_it in contents.items():
            for arguments in (("load", self.table, "--into", no_database), ("import", self.script, "--into", no_database),
                              ("query", no_database, QUERY)):
                with self.subTest(kind, work=arguments[0]):
                    no_database.write_bytes(bytes_of_it)
                    with self.unchanged():
                        self.assert_error_line(kd_db(*arguments), *arguments[1:])
                    self.assertEqual(no_database.read_bytes(), bytes_of_it)

    def test_a_folder_is_not_a_database(self):
        for arguments in (("load", self.table, "--into", self.folder), ("import", self.script, "--into", self.folder),
                          ("query", self.folder, QUERY)):
            with self.subTest(arguments[0]):
                self.fails_and_changes_nothing(arguments)


class CutDatabaseTest(support.FaultTest):
    """A truncated database of some 300 pages: the program always ends with one of its exit statuses."""

    def test_a_cut_database_gives_a_result_or_an_error(self):
        kd_db("load", self.table, "--into", self.new_database)
        whole = self.new_database.read_bytes()
        cut = self.folder / "data" / "cut.db"
        malformed = 0
        for size in [1, 17, 99, 100, 101, 1000, 4095, 4096, 4097, 8192, 12288, len(whole) // 2, len(whole) - 1]:
            for arguments in (("query", cut, "SELECT count(name) FROM input"), ("query", cut, "SELECT * FROM input"),
                              ("load", self.table, "--into", cut, "--table", "second"),
                              ("import", self.script, "--into", cut)):
                with self.subTest(size=size, work=arguments[0]):
                    cut.write_bytes(whole[:size])
                    done = kd_db(*arguments)
                    self.assertIn(done.returncode, (0, 1), done.stderr)
                    if done.returncode == 1:
                        malformed += 1
                        self.assert_error_line(done, *arguments[1:])
        self.assertGreater(malformed, 20)


class FailingScriptTest(support.FaultTest):
    """All or nothing, whatever transactions the script contains."""

    SCRIPTS = {
        "outside a transaction": "CREATE TABLE a (x); INSERT INTO kept VALUES (1, 2); INSERT INTO nowhere VALUES (1);",
        "inside a transaction": "BEGIN; INSERT INTO kept VALUES (1, 2); INSERT INTO nowhere VALUES (1); COMMIT;",
        "behind a transaction": "BEGIN; INSERT INTO kept VALUES (1, 2); COMMIT; INSERT INTO nowhere VALUES (1);",
        "without an end": "BEGIN; INSERT INTO kept VALUES (1, 2);",
        "a lone commit": "INSERT INTO kept VALUES (1, 2); COMMIT;",
        "a lone rollback": "INSERT INTO kept VALUES (1, 2); ROLLBACK;",
        "a constraint": "CREATE TABLE a (x PRIMARY KEY); INSERT INTO a VALUES (1); INSERT INTO a VALUES (1);",
        "a rollback by constraint": "CREATE TABLE a (x PRIMARY KEY ON CONFLICT ROLLBACK); INSERT INTO a VALUES (1); "
                                    "INSERT INTO a VALUES (1); INSERT INTO kept VALUES (1, 2);",
        "no SQL": "INSERT INTO kept VALUES (1, 2); this is no statement;",
        "control bytes": "INSERT INTO kept VALUES (1, 2); \x01\x02\x7f;",
    }

    def test_a_failing_script_changes_nothing(self):
        for kind, text in self.SCRIPTS.items():
            for name in ("import", "import anew"):
                with self.subTest(kind, work=name):
                    self.script.write_text(text, encoding="latin-1")
                    if name == "import anew":
                        self.script.write_text("CREATE TABLE kept (a, b);" + text, encoding="latin-1")
                    self.fails_and_changes_nothing(self.works()[name])


class LargeScriptTest(support.FaultTest):
    def test_one_statement_of_100_megabytes_is_run(self):
        self.script.write_text("CREATE TABLE t (a);\nINSERT INTO t VALUES ('" + "x" * 100_000_000 + "');\n")
        done = kd_db(*self.works()["import"])
        self.assertEqual(done.returncode, 0, done.stderr)
        connection = sqlite3.connect(self.database)
        self.assertEqual(connection.execute("SELECT length(a) FROM t").fetchall(), [(100_000_000,)])
        connection.close()

    def test_a_statement_of_100_megabytes_without_an_end_is_an_error(self):
        self.script.write_text("CREATE TABLE t (a);\nINSERT INTO t VALUES ('" + "x" * 100_000_000)
        done = kd_db(*self.works()["import"])
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"statement 2, line 2", done.stderr)
        self.assertIsNone(support.rows_in(self.database, "t"))

    def test_a_million_empty_statements_are_skipped(self):
        self.script.write_text(";\n" * 1_000_000)
        done = kd_db(*self.works()["import"])
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(b"0 statements run", done.stderr)

    def test_a_million_statements_that_do_nothing_are_run(self):
        self.script.write_text("DELETE FROM kept WHERE 0;\n" * 1_000_000)
        done = kd_db(*self.works()["import"])
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(b"1000000 statements run", done.stderr)


if __name__ == "__main__":
    support.main()
