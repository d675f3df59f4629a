"""Tells whether a proof that has passed would run the same files again."""

import hashlib
import pathlib

# Made by the build for a program to read.
INPUTS = ("tests/proof/catalogue-cases", "tests/proof/manifest-cases")


def fingerprint(paths, words):
    """Changes with the files' contents."""
    digest = hashlib.sha256(words.encode())
    for path in paths:
        digest.update(pathlib.Path(path).read_bytes())
    return digest.hexdigest()


def programs_under_wine(build, words):
    """Names of the programs, and the fingerprint of each: of itself and of what it loads, starts and reads. What belongs
    to the other proofs and to the tests is not of its concern."""
    lines = (build / "test-programs.txt").read_text(encoding="utf-8").splitlines()
    tests = {line.split()[0] for line in lines if line.strip()}
    shared = sorted(path for path in (build / "bin").iterdir()
                    if path.suffix == ".dll" or (path.suffix == ".exe" and path.stem not in tests))
    shared += [build / path for path in INPUTS if (build / path).exists()]
    return {name: fingerprint([build / "bin" / f"{name}.exe", *shared], words)
            for name in sorted(tests) if name.startswith("proof_")}
