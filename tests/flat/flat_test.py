"""The peak memory of a command at 10,000 and at 1,000,000 records differs by less than 4 MiB."""

import argparse
import subprocess
import sys
import tempfile

FEW, MANY = 10_000, 1_000_000
LIMIT_KIB = 4096

# The input of each command.
INPUTS = {"walk": "make-dbf", "walk-text": "make-text", "convert": "make-dbf", "load": "make-dbf",
          "import": "make-script", "query": None}


def run(command):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit(f"{command} returned {done.returncode}:\n{done.stderr.decode(errors='replace')}")
    return done.stderr


def peak(arguments, count):
    """Peak memory in KiB of the command on a new input of this number of records."""
    with tempfile.TemporaryDirectory(prefix="kd_flat_") as folder:
        if INPUTS[arguments.name]:
            run([arguments.work, INPUTS[arguments.name], str(count), folder])
        if arguments.name == "load":
            command = [arguments.kd_db, "load", f"{folder}/input.dbf", "--into", f"{folder}/output.db"]
        else:
            command = [arguments.work, arguments.name, str(count), folder]
        return int(run([arguments.peak] + command).splitlines()[-1])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("name", choices=sorted(INPUTS))
    parser.add_argument("--peak", required=True)
    parser.add_argument("--work", required=True)
    parser.add_argument("--kd-db")
    arguments = parser.parse_args()
    few, many = peak(arguments, FEW), peak(arguments, MANY)
    print(f"{arguments.name}: {few} KiB for {FEW}, {many} KiB for {MANY}: difference {many - few} KiB")
    return 0 if many - few < LIMIT_KIB else 1


if __name__ == "__main__":
    sys.exit(main())
