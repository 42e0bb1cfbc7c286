"""scripts/release in a small tree, with stand-ins for the checks that take hours.

usage: pytest test_release.py
"""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

_TREE = Path(__file__).parents[2]
_PRESETS = """{"configurePresets": [{"name": "base", "hidden": true}, {"name": "dev"}, {"name": "mips"}]}"""
_CHANGES = """# Changes

## Unreleased

- Boards have a lid.

## 1.0.0

All of it.
"""
# Each tells that it was called. What stands in the file "failing" fails, by its name or with its first argument.
_STAND_IN = """#!/bin/bash
set -e
called=$(basename "$0")${1:+ $1}
echo "$called" >>"$RELEASE_TEST/calls"
if grep -qx -e "$called" -e "${called%% *}" "$RELEASE_TEST/failing"; then
    echo "it is broken" >&2
    exit 1
fi
"""
_DOES = {
    "test": """
    if [ "$1" = parts ]; then
        echo dev
        echo mips
        exit
    fi
    [ "$BSP_TEST_THOROUGH" = 1 ]
    mkdir -p "build/$1"
    touch "build/$1/.ninja_log"
    """,
    "fuzz": "",
    "describe-abi": """
    for processor in x86_64 mips; do
        sed -E "$(cat "$RELEASE_TEST/abi")" tests/package/abi/libbsp/1.0.0-$processor.abi \\
            >tests/package/abi/libbsp/$1-$processor.abi
        cp tests/package/abi/libbsp/1.0.0-$processor.abi tests/package/abi/libvboard-control/$1-$processor.abi
    done
    """,
    "keep-board": "mkdir -p tests/control/released; echo a board >tests/control/released/$1.tar.gz",
    "package": """
    [ "$1 $2" = "--check --output" ]
    mkdir "$3"
    echo "a package of $(git log -1 --format=%s)" >"$3/bsp.deb"
    echo "a list" >"$3/manifest"
    (cd "$3" && sha256sum * >SHA256SUMS)
    """,
}
_COMMIT = ["describe-abi 1.1.0", "keep-board 1.1.0"]
_PARTS = ["test dev", "test mips"]
_FUZZ = f"fuzz {600 * len(os.sched_getaffinity(0)) // 2 + 1}" # seconds for each of two targets
# Whoever runs this may sign commits, have hooks, or be in one.
_ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith("GIT_")} | {
    "GIT_CONFIG_GLOBAL": os.devnull,
    "GIT_CONFIG_SYSTEM": os.devnull,
}
_CHECKS = [*_PARTS, _FUZZ, "package --check"]


class Tree:
    """A repository with a version to be released."""

    def __init__(self, folder):
        self.root = folder / "bsp"
        self.folder = folder
        self.failing("")
        (folder / "abi").write_text("")
        (folder / "calls").write_text("")
        for name in ("scripts/release", "scripts/common.sh", "tests/package/describe-abi.sh", "include/bsp.h"):
            self.write(name, (_TREE / name).read_text())
        for name in ("libbsp/1.0.0-x86_64.abi", "libbsp/1.0.0-mips.abi", "libvboard-control/suppressions"):
            self.write(f"tests/package/abi/{name}", (_TREE / "tests/package/abi" / name).read_text())
        for name, program in _DOES.items():
            self.write(f"scripts/{name}", _STAND_IN + program)
        self.write("CHANGELOG.md", _CHANGES)
        self.write("CMakePresets.json", _PRESETS)
        self.write("fuzz/CMakeLists.txt", "fuzz_add(numbers)\nfuzz_add(texts)\n")
        self.write(".gitignore", "/build/\n")
        for script in (self.root / "scripts").iterdir():
            script.chmod(0o755)
        self.git("init", "-q", "-b", "main")
        self.git("config", "user.name", "A Maintainer")
        self.git("config", "user.email", "maintainer@example.com")
        self.commit("Give boards a lid")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def failing(self, name):
        (self.folder / "failing").write_text(name + "\n")

    def git(self, *arguments):
        command = ["git", "-C", self.root, *arguments]
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, env=_ENVIRONMENT).stdout.strip()

    def commit(self, subject):
        self.git("add", "--all")
        self.git("commit", "-q", "-m", subject)

    def release(self, *arguments):
        """Its exit code, and all that it says."""
        ended = subprocess.run(
            [self.root / "scripts/release", *arguments],
            cwd=self.folder,
            env={**_ENVIRONMENT, "RELEASE_TEST": str(self.folder)},
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )
        return ended.returncode, ended.stdout

    def refused(self, *arguments):
        """What is said of a release that fails, once nothing of it is in the repository."""
        before = self.git("for-each-ref"), self.git("status", "--porcelain")
        code, said = self.release(*arguments)
        assert code == 1, said
        assert (self.git("for-each-ref"), self.git("status", "--porcelain")) == before
        return said

    def calls(self):
        """What was called since this was asked last."""
        calls = (self.folder / "calls").read_text().splitlines()
        (self.folder / "calls").write_text("")
        return calls

    @property
    def files(self):
        return self.root / "build/releases/1.1.0/files"


@pytest.fixture
def tree(tmp_path):
    return Tree(tmp_path)


def test_a_release_is_a_commit_a_tag_and_files(tree):
    before = tree.git("rev-parse", "HEAD")
    code, said = tree.release("1.1.0")
    assert code == 0, said
    assert tree.calls() == [*_COMMIT, "test parts", *_CHECKS]
    assert tree.git("rev-parse", "HEAD~1") == before
    assert tree.git("log", "-1", "--format=%s %an <%ae>") == "Release 1.1.0 A Maintainer <maintainer@example.com>"
    assert tree.git("diff", "--name-status", "HEAD~1").splitlines() == [
        "M\tCHANGELOG.md",
        "A\ttests/control/released/1.1.0.tar.gz",
        "A\ttests/package/abi/libbsp/1.1.0-mips.abi",
        "A\ttests/package/abi/libbsp/1.1.0-x86_64.abi",
        "A\ttests/package/abi/libvboard-control/1.1.0-mips.abi",
        "A\ttests/package/abi/libvboard-control/1.1.0-x86_64.abi",
    ]
    assert (tree.root / "CHANGELOG.md").read_text() == _CHANGES.replace("Unreleased", "1.1.0")
    assert tree.git("status", "--porcelain") == ""
    assert tree.git("cat-file", "-t", "v1.1.0") == "tag"
    assert tree.git("rev-parse", "v1.1.0^{commit}") == tree.git("rev-parse", "HEAD")
    assert tree.git("tag", "-l", "--format=%(contents)", "v1.1.0") == "Release 1.1.0\n\n- Boards have a lid."
    assert "git push --atomic origin main v1.1.0" in said
    assert sorted(path.name for path in tree.files.iterdir()) == [
        "SHA256SUMS", "bsp-1.1.0.tar.xz", "bsp.deb", "changes-1.1.0.md", "interfaces-1.1.0", "manifest"
    ]
    subprocess.run(["sha256sum", "--quiet", "--check", "SHA256SUMS"], cwd=tree.files, check=True)
    assert len((tree.files / "SHA256SUMS").read_text().splitlines()) == 5
    assert (tree.files / "bsp.deb").read_text() == "a package of Release 1.1.0\n"
    assert (tree.files / "changes-1.1.0.md").read_text() == "- Boards have a lid.\n\n"
    assert (tree.files / "interfaces-1.1.0").read_text() == "".join(
        f"tests/package/abi/{library}/1.1.0-{processor}.abi\n    {verdict}\n"
        for library, verdict in (
            ("libbsp", "programs for 1.0.0 run with 1.1.0"),
            ("libvboard-control", "is the first of its kind"),
        )
        for processor in ("mips", "x86_64")
    )
    unpacked = subprocess.run(
        ["tar", "-xJOf", tree.files / "bsp-1.1.0.tar.xz", "bsp-1.1.0/CHANGELOG.md"], check=True, stdout=subprocess.PIPE
    )
    assert unpacked.stdout.decode() == (tree.root / "CHANGELOG.md").read_text()


def test_the_header_gets_the_version(tree):
    code, said = tree.release("2.3.4")
    assert code == 0, said
    changed = [line for line in tree.git("diff", "HEAD~1", "--", "include/bsp.h").splitlines() if line.startswith("+#")]
    assert [line.split()[1:3] for line in changed] == [
        ["BSP_VERSION_MAJOR", "2"], ["BSP_VERSION_MINOR", "3"], ["BSP_VERSION_PATCH", "4"]
    ]


@pytest.mark.parametrize(
    ("failing", "done"), [("describe-abi", 0), ("keep-board", 0), ("test dev", 0), ("test mips", 1), ("fuzz", 2), ("package", 3)]
)
def test_what_fails_is_all_that_is_done_again(tree, failing, done):
    tree.failing(failing)
    said = tree.refused("1.1.0")
    assert "it is broken" in said
    assert not tree.files.exists() or not list(tree.files.iterdir())
    tree.failing("")
    tree.calls()
    code, said = tree.release("1.1.0")
    assert code == 0, said
    again = tree.calls()
    commit = _COMMIT if failing in ("describe-abi", "keep-board") else []
    assert again == [*commit, "test parts", *_CHECKS[done:]]


def test_after_a_commit_all_is_done_again(tree):
    tree.failing("fuzz")
    tree.refused("1.1.0")
    tree.failing("")
    tree.write("README.md", "Mended.\n")
    tree.commit("Mend it")
    tree.calls()
    code, said = tree.release("1.1.0")
    assert code == 0, said
    assert tree.calls() == [*_COMMIT, "test parts", *_CHECKS]
    assert tree.git("log", "--format=%s").splitlines() == ["Release 1.1.0", "Mend it", "Give boards a lid"]


def test_a_configuration_that_nothing_builds_is_no_release(tree):
    tree.write("CMakePresets.json", _PRESETS.replace('{"name": "dev"}', '{"name": "dev"}, {"name": "odd"}'))
    tree.commit("Have one more")
    assert "WRONG nothing has built the configuration 'odd'" in tree.refused("1.1.0")


@pytest.mark.parametrize(
    "gone",
    [
        "/<elf-symbol name='bspCpldGet'/d; /name='bspCpldGet'/,/<\\/function-decl>/d", # the function
        "/<function-decl name='bspCpldGet'/,/<\\/function-decl>/ { /<parameter/d }", # all that it takes
    ],
)
def test_programs_that_would_break_are_no_release(tree, gone):
    (tree.folder / "abi").write_text(gone)
    said = tree.refused("1.1.0")
    assert "bspCpldGet" in said
    assert "'interfaces'" in said


def test_what_is_released_is_what_was_checked(tree):
    tree.failing("package")
    tree.refused("1.1.0")
    tree.failing("")
    tree.calls()
    mended = tree.root / "build/releases/1.1.0/tree/CHANGELOG.md"
    before = mended.read_text()
    mended.write_text("mended in the wrong place\n")
    assert " M CHANGELOG.md" in tree.refused("1.1.0")
    assert tree.calls() == []
    mended.write_text(before)
    renewing = (tree.root / "scripts/test").read_text().replace("mkdir -p", "echo renewed >>CHANGELOG.md\nmkdir -p")
    tree.write("scripts/test", renewing)
    tree.commit("Change a file by a test")
    assert " M CHANGELOG.md" in tree.refused("1.1.0")


@pytest.mark.parametrize("how", [[], ["--amend"]])
def test_what_is_committed_in_the_clone_is_not_released(tree, how):
    tree.failing("package")
    tree.refused("1.1.0")
    tree.failing("")
    tree.calls()
    tree.git("-C", "build/releases/1.1.0/tree", "commit", "-q", "--allow-empty", "-m", "Mend it there", *how)
    assert "something was committed in" in tree.refused("1.1.0")
    assert tree.calls() == []


@pytest.mark.parametrize(
    ("name", "content", "said"),
    [
        ("scripts/test", _STAND_IN, "scripts/test names no parts"),
        ("CMakePresets.json", '{"configurePresets": [{"name": "base", "hidden": true}]}', "fails with 'presets'"),
        ("scripts/describe-abi", _STAND_IN, "fails with 'interfaces'"),
    ],
)
def test_a_check_without_anything_to_check_fails(tree, name, content, said):
    tree.write(name, content)
    tree.commit("Have nothing to check")
    assert said in tree.refused("1.1.0")


def test_what_cannot_be_released_is_refused_at_once(tree):
    assert "usage: scripts/release VERSION" in tree.refused()
    for version in ("1.1", "1.08.0"):
        assert f"'{version}' is no version; write one as 1.0.0" in tree.refused(version)
    for version in ("1.0.0", "0.9.9"):
        assert f"CHANGELOG.md tells of 1.0.0 already, and {version} is not later" in tree.refused(version)
    tree.write("odd", "")
    assert "?? odd" in tree.refused("1.1.0")
    (tree.root / "odd").unlink()
    tree.git("tag", "v1.1.0")
    assert "there is a tag v1.1.0 already" in tree.refused("1.1.0")
    tree.git("tag", "-d", "v1.1.0")
    tree.git("checkout", "-q", "--detach")
    assert "no branch is checked out" in tree.refused("1.1.0")
    tree.git("checkout", "-q", "main")
    tree.write("CHANGELOG.md", "# Changes\n\n## Unreleased\n\n## 1.0.0\n\nAll of it.\n")
    tree.commit("Have nothing to tell")
    assert "CHANGELOG.md has no section 'Unreleased'" in tree.refused("1.1.0")
    assert tree.calls() == []


@pytest.mark.parametrize(
    ("meanwhile", "said", "commits", "tags"),
    [
        (
            "git commit -q --allow-empty -m 'Be quicker'",
            "something was committed here since the release began",
            ["Be quicker"],
            "",
        ),
        ("git checkout -q -b other", "another branch is checked out than when the release began", [], ""),
        ("git tag v1.1.0", "there is a tag v1.1.0 by now", [], "v1.1.0 commit"),
        ("echo more >>CHANGELOG.md", "files here were changed since the release began", [], ""),
    ],
)
def test_what_was_done_in_between_is_not_lost(tree, meanwhile, said, commits, tags):
    package = (tree.root / "scripts/package").read_text()
    tree.write("scripts/package", f"{package}(cd ../../../.. && {meanwhile})\n")
    tree.commit("Do something behind its back")
    code, told = tree.release("1.1.0")
    assert code == 1
    assert said in told
    expected = [*commits, "Do something behind its back", "Give boards a lid"]
    for branch in tree.git("for-each-ref", "--format=%(refname)", "refs/heads").splitlines():
        assert tree.git("log", branch, "--format=%s").splitlines() == expected
    assert tree.git("tag", "-l", "--format=%(refname:short) %(objecttype)") == tags
