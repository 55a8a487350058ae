"""Compares the reader, value by value, with an independent program, on tables that several programs wrote: ours
(oracle_tables), shapelib's tools and python3-dbf. ASCII content. One argument chooses the oracle."""

import argparse
import datetime
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile

PACKAGES = {"dbfcreate": "shapelib", "dbfadd": "shapelib", "dbfdump": "shapelib", "dbview": "dbview", "sqlite3": "sqlite3"}


def run(*command, text_input=None):
    if command[0] in PACKAGES and shutil.which(command[0]) is None:
        sys.exit(f"{command[0]} is missing: install the Debian package {PACKAGES[command[0]]}")
    done = subprocess.run([str(word) for word in command], input=text_input, capture_output=True, text=True,
                          encoding="ascii", check=False)
    if done.returncode != 0:
        sys.exit(f"{command} returned {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout


def dbf_module():
    try:
        import dbf  # pylint: disable=import-outside-toplevel
    except ImportError:
        sys.exit("the module dbf is missing: install the Debian package python3-dbf")
    return dbf


class Table:
    """The result of our reader for a table."""

    def __init__(self, dump, path):
        lines = run(dump, "read", path.parent, path.stem).split("\n")
        self.names, self.types, self.records = [], [], []
        for line in lines:
            kind, *rest = line.split("\t")
            if kind == "column":
                self.names.append(rest[0])
                self.types.append(rest[1])
            elif kind == "record":
                self.records.append((rest[0] == "*", rest[1:]))


# Makers of tables

def make_with_shapelib(folder):
    numbers, stars = folder / "shape.dbf", folder / "stars.dbf"
    for path in (numbers, stars):
        run("dbfcreate", path, "-s", "NAME", "20", "-n", "COUNT", "6", "0", "-n", "PRICE", "12", "3")
    for row in range(1, 40):
        run("dbfadd", numbers, f"r{row}c1", str(row * 13), f"{row * 1.125:.3f}")
    run("dbfadd", stars, "no numbers here", "", "")


def make_with_python(folder):
    dbf = dbf_module()
    for kind in ("db3", "clp"):
        table = dbf.Table(str(folder / f"python_{kind}.dbf"),
                          "name C(15); count N(7,0); price N(10,2); bought D; ready L", dbf_type=kind)
        table.open(dbf.READ_WRITE)
        for row in range(1, 30):
            table.append((f"{kind} r{row}c1", row * 17, row * 0.25, dbf.Date(2000 + row, row % 12 + 1, row % 28 + 1),
                          row % 2 == 0))
        table.append(("only a name", None, None, None, None))
        dbf.delete(table[3])
        table.close()


# Oracles: each returns the records of a file as (deleted, values), comparable with `ours`.

def read_with_dbfdump(path, _):
    records = []
    for line in run("dbfdump", "-r", "-m", path).split("\n"):
        if line.startswith("Record: "):
            records.append((False, []))
        elif line == "(DELETED)":
            records[-1] = (True, records[-1][1])
        elif ": " in line:
            records[-1][1].append(line.split(": ", 1)[1].strip(" "))
    return records


def ours_for_dbfdump(table):
    return [(deleted, [value.strip(" ") for value in values]) for deleted, values in table.records]


def read_with_dbview(path, table):
    """Only records that are not deleted; the delimiter is a control character, which no value contains."""
    records = []
    for line in run("dbview", "-b", "-d", "\x01", path).split("\n"):
        values = line.split("\x01")[:-1]
        if values:
            records.append((False, [value.rstrip(" ") for value in values]))
    return records


def ours_for_dbview(table):
    return [record for record in table.records if not record[0]]


def typed(kind, value):
    """Our text as python3-dbf would return it; text that is not a number, as dbfadd writes it, is None."""
    if kind in ("integer", "float"):
        value = value.strip()
        return float(value) if value.strip("*") else None
    if kind == "date":
        return datetime.datetime.strptime(value, "%Y%m%d").date() if value.strip() else None
    if kind == "boolean":
        return value in "TtYy" if value.strip("? ") else None
    return value.rstrip(" ")


def read_with_python(path, table):
    dbf = dbf_module()
    source = dbf.Table(str(path))
    source.open()
    records = []
    for record in source:
        values = []
        for kind, value in zip(table.types, record):
            value = None if value is None or (kind == "date" and not value) else value
            values.append(value.rstrip(" ") if isinstance(value, str) else value)
        records.append((dbf.is_deleted(record), values))
    source.close()
    return records


def ours_for_python(table):
    return [(deleted, [typed(kind, value) for kind, value in zip(table.types, values)])
            for deleted, values in table.records]


def sql_value(kind, value):
    """A value as the script stores it: quotes become backquotes, blanks NULL, an unknown logical false."""
    if kind == "boolean":
        return 1 if value in ("T", "t", "Y", "y") else 0
    if not value.strip():
        return None
    if kind == "date":
        return f"{value[:4]}-{value[4:6]}-{value[6:]}"
    if kind in ("integer", "float"):
        return float(value)
    return value.replace("'", "`")


def read_with_sqlite3(path, _):
    """The rows that the sqlite3 shell stored from the script of the table."""
    database = path.with_suffix(".db")
    database.unlink(missing_ok=True)
    run("sqlite3", "-bail", database, text_input=path.with_suffix(".sql").read_text(encoding="ascii"))
    connection = sqlite3.connect(database)
    rows = connection.execute(f"SELECT * FROM {path.stem}").fetchall()
    connection.close()
    return [(False, list(row)) for row in rows]


def ours_for_sqlite3(table):
    """In the script, a deleted record repeats the previous record."""
    rows, values = [], [""] * len(table.names)
    for deleted, read in table.records:
        values = values if deleted else read
        rows.append((False, [sql_value(kind, value) for kind, value in zip(table.types, values)]))
    return rows


ORACLES = {"dbfdump": (read_with_dbfdump, ours_for_dbfdump), "dbview": (read_with_dbview, ours_for_dbview),
           "python3-dbf": (read_with_python, ours_for_python), "sqlite3": (read_with_sqlite3, ours_for_sqlite3)}


# Numbers go into a script unchecked, and dbfadd writes asterisks for missing ones.
NO_SQL = {"stars.dbf"}


def compare(oracle, path, dump):
    """The number of values that agree; prints the first difference and returns None if there is one."""
    table = Table(dump, path)
    read, ours_for = ORACLES[oracle]
    if oracle == "sqlite3":
        run(dump, "script", path.parent, path.stem)
    theirs, ours = read(path, table), ours_for(table)
    if len(theirs) != len(ours):
        print(f"{path.name}: {oracle} reads {len(theirs)} records, we read {len(ours)}")
        return None
    for number, (their, our) in enumerate(zip(theirs, ours), 1):
        if their != our:
            print(f"{path.name}, record {number}:\n  {oracle}: {their}\n  ours: {our}")
            return None
    return len(ours) * len(table.names)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("oracle", choices=sorted(ORACLES))
    parser.add_argument("--tables", required=True)
    parser.add_argument("--dump", required=True)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kd_oracle_") as name:
        folder = pathlib.Path(name)
        run(arguments.tables, folder)
        make_with_shapelib(folder)
        make_with_python(folder)
        results = {path.name: compare(arguments.oracle, path, arguments.dump)
                   for path in sorted(folder.glob("*.dbf"))
                   if arguments.oracle != "sqlite3" or path.name not in NO_SQL}
    for table, values in results.items():
        print(f"{table}: {'differs' if values is None else f'{values} values agree'}")
    return 1 if None in results.values() or len(results) < 9 else 0


if __name__ == "__main__":
    sys.exit(main())
