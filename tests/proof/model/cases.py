"""Makes documents, and what the model makes of each, for a program that reads them with the library.

  cases.py catalogue|manifest COUNT SEED [--simple]

  --simple   only files that every reader takes: not cut off, less than 8,000 bytes (Wine's reader loses a letter of
             several bytes that lies across the end of the piece that it reads first, at 8,188 bytes), and with no
             namespaces but the root's (of two declarations of a prefix Wine's reader tells the outer one)

catalogue_cases.py and manifest_cases.py say which blocks a case consists of."""

import itertools
import random
import sys

import catalogue_cases
import manifest_cases
from blocks import block
from documents import Maker

KINDS = {"catalogue": (catalogue_cases.CatalogueWords, catalogue_cases.case),
         "manifest": (manifest_cases.ManifestWords, manifest_cases.case)}


def documents(words, seed, is_simple):
    maker = Maker(words, seed)
    while True:
        document = maker.document(is_simple)
        if not is_simple or (len(document) < 8000 and document.count(b"xmlns:") == 1):
            yield document


def main():
    words, case = KINDS[sys.argv[1]]
    count, seed = int(sys.argv[2]), int(sys.argv[3])
    chance = random.Random(seed)  # of a case beside its document
    for document in itertools.islice(documents(words, seed, "--simple" in sys.argv), count):
        sys.stdout.buffer.write(b"".join(block(data) for data in case(document, chance)))


if __name__ == "__main__":
    main()
