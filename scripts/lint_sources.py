#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: lint_sources.py FOLDER...

The sources of these folders, those first that changed last. A header counts as the source of its name, else
as one that includes it: of its own folder where there is one, by way of other headers where there is none.
"""
import os
import re
import subprocess
import sys


def git(*arguments):
    return subprocess.run(("git", *arguments), check=True, capture_output=True, text=True).stdout.splitlines()


def users_of(files):
    """For each header: the files that include it."""
    by_name = {}
    for file in files:
        by_name.setdefault(os.path.basename(file), []).append(file)
    users = {}
    for user in files:
        with open(user, encoding="utf-8") as text:
            for path in re.findall(r'^#include ["<](.+)[">]', text.read(), re.M):
                for header in by_name.get(os.path.basename(path), []):
                    if ("/" + header).endswith("/" + path):
                        users.setdefault(header, []).append(user)
    return users


def source_of(file, users, seen=()):
    """@return None where no source of these folders reads the file."""
    same_name = os.path.splitext(file)[0] + ".cpp"
    if os.path.isfile(same_name):
        return same_name
    near = sorted(users.get(file, []),
                  key=lambda user: (not user.endswith(".cpp"), os.path.dirname(user) != os.path.dirname(file)))
    found = (source_of(user, users, (*seen, file)) for user in near if user not in seen)
    return next((source for source in found if source is not None), None)


def main(folders):
    files = [file for file in git("ls-files", "--", *folders) if file.endswith((".cpp", ".h")) and os.path.isfile(file)]
    users = users_of(files)
    known = set(files)
    latest = [*git("diff", "--name-only", "HEAD", "--", *folders),
              *git("log", "--format=", "--name-only", "--", *folders), *files]
    sources = [source_of(file, users) for file in dict.fromkeys(latest) if file in known]
    for source in dict.fromkeys(source for source in sources if source is not None):
        print(source)


if __name__ == "__main__":
    main(sys.argv[1:])
