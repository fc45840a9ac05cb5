#!/usr/bin/env python3
"""Mutation testing, by hand: does a test fail when a line of a pure function is wrong?

    tools/mutate.py                              every file of SUBJECTS below
    tools/mutate.py src/foundation/Normalisation.cpp  that file alone; several may be named
    tools/mutate.py --line 52 --line 53 src/foundation/Normalisation.cpp  no more than these lines

Makes one small fault at a time (tools/mutants.py), compiles that one file, links it with its tests
and runs them. Prints the faults that no test noticed, and ends with 1 if there are any but those that
tools/equivalent-mutants.txt explains.

Libraries and tests come from build/mutants, which it configures and builds first. What stands above
the last #include of the file is compiled once, so that a mutant takes less than a second of processor
time.
"""

import argparse
import json
import os
import resource
import shlex
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

sys.dont_write_bytecode = True  # no folder of compiled text in the tree
from mutants import mutants_of  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "mutants"
NINJA = ["ninja", "-C", str(BUILD)]
EXPLAINED = ROOT / "tools" / "equivalent-mutants.txt"


@dataclass(frozen=True)
class Tests:
    """Who judges a file: these sources of a test program, linked with the file's own library or,
    where that is too much for a small function, with others."""

    program: str
    sources: tuple
    filter: str = "*"
    libraries: tuple = ()


# Seconds for each mutant, for what the other tests tell as well.
QUICK = "-SubmitPdu.everyCodePointArrives:*.everyTextOfTwoBytesConvertsOrFails"
CODEC = ("GsmAlphabetTest", "MessageTextTest", "SubmitDecoder", "SubmitPduTest")

SUBJECTS = {
    "src/foundation/Normalisation.cpp": Tests("foundation_test", ("NormalisationTest",)),
    "src/NorvaneSMS/queue/QueueDropFile.cpp": Tests("NorvaneSMS_test", ("QueueDropFileTest",)),
    "src/NorvaneSMS/console/BulkTemplate.cpp": Tests(
        "NorvaneSMS_test", ("BulkTemplateTest",)),
    "src/NorvaneSMS/queue/IntegerConversion.cpp": Tests(
        "NorvaneSMS_test", ("IntegerConversionTest",), QUICK),
    "src/NorvaneSMS/queue/FindFiles.cpp": Tests("NorvaneSMS_test", ("FindFilesTest",)),
    "src/TovekSMService/modem/codec/GsmAlphabet.cpp": Tests("TovekSMService_test", CODEC, QUICK),
    "src/TovekSMService/modem/codec/SubmitPdu.cpp": Tests("TovekSMService_test", CODEC, QUICK),
    "src/TovekSMService/modem/codec/MessageText.cpp": Tests("TovekSMService_test", CODEC, QUICK),
    "src/TovekSMService/modem/at/PortParameter.cpp": Tests("TovekSMService_test", ("PortParameterTest",)),
    "src/TovekSMService/modem/codec/AnswerParsers.cpp": Tests("TovekSMService_test", ("AnswerParsersTest",)),
    "src/TovekSMService/dispatch/ValidityPeriod.cpp": Tests(
        "TovekSMService_test", ("ValidityPeriodTest",)),
    "src/TovekSMService/dispatch/RunPace.cpp": Tests(
        "TovekSMService_test", ("RunPaceTest",)),
    "src/TovekSMService/dispatch/RetryPolicy.cpp": Tests(
        "TovekSMService_test", ("RetryPolicyTest",)),
    "src/NorvaneSheetReader/CellText.cpp": Tests(
        "NorvaneSheetReader_test", ("CellTextTest",)),
    "src/NorvaneSMS/engine/Estimate.cpp": Tests(
        "NorvaneSMS_engine_test", ("EstimateTest",)),
    "src/NorvaneSMS/console/ConsoleLayout.cpp": Tests("NorvaneSMS_test", ("ConsoleLayoutTest",)),
}

# Processor time, not time on the clock: a busy machine kills no mutant. A test that waits for what
# never comes doesn't use any, so there is a limit of the other kind too.
CPU_SECONDS_MORE = 3
WALL_SECONDS = 120
MEMORY_BYTES = 4 << 30

KILLED, SURVIVED, UNCOMPILED = "killed", "survived", "not compiled"


class Subject:
    """A source file, with the way to compile it and to link it with its tests."""

    def __init__(self, file, tests, folder):
        self.file = file
        self.tests = tests
        self.folder = folder
        self.source = (ROOT / file).read_text(encoding="utf-8")
        self.compile, library = self._compile_command()
        self.link = self._link_command(tests.libraries or (library,))
        self.body = self._precompile_head()

    def _compile_command(self):
        """@return the command without its file and its warnings, and the file's library"""
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            if entry["file"] == str(ROOT / self.file):
                words = shlex.split(entry["command"])
                break
        else:
            sys.exit(f"{self.file}: not compiled by {BUILD}")
        cut = words.index("-o")
        library = next(part for part in Path(words[cut + 1]).parts if part.endswith(".dir"))
        words = [w for w in words[:cut]
                 if w != "-g" and not w.startswith("-W") and "ccache" not in w]
        return [*words, "-O0", "-w", "-D_GLIBCXX_ASSERTIONS"], library.removesuffix(".dir")

    def _link_command(self, libraries):
        """Builds what is needed of the test program.
        @return the command that links it, without the file itself"""
        target = f"tests/{self.tests.program}"
        commands = run([*NINJA, "-t", "commands", "-s", target]).stdout
        words = shlex.split(next(s for s in commands.split("&&") if f" -o {target} " in s))
        chosen = {f"{source}.cpp.o" for source in self.tests.sources}
        objects = [w for w in words if Path(w).name in chosen]
        main = [w for w in words if Path(w).name.startswith("libnorvane_test_")]
        run([*NINJA, *objects, *main, *libraries])
        kept = []
        for word in words:
            if word.endswith(".o") and word not in objects:
                continue
            if word.endswith(".a") and not (BUILD / word).exists():
                continue
            kept.append(word)
        return [w for w in kept if w != "-g"]

    def _precompile_head(self):
        """Compiles what stands above the code.
        @return the code below"""
        last = self.source.rfind("\n#include ")
        cut = self.source.index("\n", last + 1) + 1
        head = self.folder / "head.h"
        head.write_text(self.source[:cut], encoding="utf-8")
        run([*self.compile, "-x", "c++-header", str(head), "-o", f"{head}.gch"])
        return cut

    def try_mutant(self, text, name, cpu_seconds):
        """@return what became of the source `text`"""
        place = self.folder / name
        place.mkdir()
        source, obj, program = place / "mutant.cpp", place / "mutant.o", place / "tests"
        source.write_text(f'#include "head.h"\n{text[self.body:]}', encoding="utf-8")
        command = [*self.compile, "-I", str(self.folder), "-c", str(source), "-o", str(obj)]
        if run(command, check=False).returncode != 0:
            return UNCOMPILED
        # The object comes first, so that the one in the library isn't taken.
        link = [str(program) if w == f"tests/{self.tests.program}" else w for w in self.link]
        run([link[0], str(obj), *link[1:], "-fuse-ld=gold", "-Wl,-S"], cwd=BUILD)
        passed = self.run_tests(program, cpu_seconds)
        program.unlink()
        return SURVIVED if passed else KILLED

    def run_tests(self, program, cpu_seconds):
        def limits():
            resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 1))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_BYTES, MEMORY_BYTES))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        command = [str(program), f"--gtest_filter={self.tests.filter}", "--gtest_fail_fast",
                   "--gtest_brief=1"]
        try:
            # What a mutant that crashes leaves behind is removed with its own folder.
            return subprocess.run(command, preexec_fn=limits, timeout=WALL_SECONDS,
                                  env={**os.environ, "TMPDIR": str(program.parent)},
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  check=False).returncode == 0
        except subprocess.TimeoutExpired:
            return False


def run(command, check=True, cwd=None):
    done = subprocess.run(command, capture_output=True, text=True, cwd=cwd, check=False)
    if check and done.returncode != 0:
        sys.exit(f"{shlex.join(command)}\n{done.stdout}{done.stderr}")
    return done


def configure():
    if not (BUILD / "build.ninja").exists():
        run(["cmake", "-S", str(ROOT), "-B", str(BUILD), "-G", "Ninja",
             "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
             "-DNORVANE_BENCHMARKS=OFF", "-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON"])


def explained():
    """The mutants that change nothing anybody could see: (file, line, line as it is made)."""
    known, file, before = set(), "", ""
    for line in EXPLAINED.read_text(encoding="utf-8").splitlines():
        if line.startswith("src/"):
            file = line.split(":")[0]
        elif line.startswith("- "):
            before = line[2:]
        elif line.startswith("+ "):
            known.add((file, before, line[2:]))
    return known


def children_seconds():
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime


def try_file(file, tests, jobs, lines, known):
    """@return the number of mutants that survived without an explanation"""
    with tempfile.TemporaryDirectory(prefix="mutants-") as folder:
        subject = Subject(file, tests, Path(folder))
        before = children_seconds()
        if subject.try_mutant(subject.source, "unchanged", WALL_SECONDS) != SURVIVED:
            sys.exit(f"{file}: its tests fail without a mutant")
        limit = int(5 * (children_seconds() - before)) + CPU_SECONDS_MORE

        mutants = [m for m in mutants_of(subject.source)
                   if m.start >= subject.body and (not lines or m.line in lines)]
        with ThreadPoolExecutor(jobs) as pool:
            results = list(pool.map(
                lambda pair: subject.try_mutant(pair[1].applied(), str(pair[0]), limit),
                enumerate(mutants)))

    unexplained = [m for m, result in zip(mutants, results)
                   if result == SURVIVED and (file, *m.lines()) not in known]
    survived = results.count(SURVIVED)
    print(f"{file}: {len(mutants)} mutants, {results.count(UNCOMPILED)} not compiled, "
          f"{results.count(KILLED)} killed, {survived} survived, "
          f"{survived - len(unexplained)} of them explained", flush=True)
    for mutant in unexplained:
        before, after = mutant.lines()
        print(f"  line {mutant.line}\n- {before}\n+ {after}", flush=True)
    return len(unexplained)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("files", nargs="*", metavar="FILE", help="a file of SUBJECTS")
    parser.add_argument("--line", type=int, action="append", help="a line to try alone")
    parser.add_argument("-j", "--jobs", type=int, default=1, help="mutants at a time")
    arguments = parser.parse_args()
    unknown = [file for file in arguments.files if file not in SUBJECTS]
    if unknown:
        parser.error(f"no tests are named for {unknown[0]}: SUBJECTS in {__file__}")

    os.environ["QT_QPA_PLATFORM"] = "offscreen"
    configure()
    known = explained()
    unexplained = sum(try_file(file, SUBJECTS[file], arguments.jobs, arguments.line, known)
                      for file in arguments.files or SUBJECTS)
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
