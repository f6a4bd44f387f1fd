"""Copies of this tree in which mistakes are made, so that one sees who notices them."""

import contextlib
import dataclasses
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]


@dataclasses.dataclass(frozen=True)
class Mistake:
    file: str
    name: str
    before: str  # stands once in the file
    after: str
    explanation: str = ""  # why no test can notice it; empty when one must

    @property
    def room(self):
        return self.file.split("/")[0]


class NotMade(Exception):
    """The mistake no longer fits the code."""


def command(words, **options):
    return subprocess.run(words, capture_output=True, text=True, errors="replace", **options)


def listed_files():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                            check=True, capture_output=True).stdout.decode().split("\0")
    return {name for name in listed if name and (ROOT / name).is_file()}


class Copy:
    """A copy of the tree with a build of its own, in a folder of build/."""

    def __init__(self, folder):
        self.tree = ROOT / "build" / folder / "tree"
        self.build_folder = ROOT / "build" / folder / "build"

    def fill(self, files):
        """Writes only what differs, so that little is built again."""
        for name in files:
            target, content = self.tree / name, (ROOT / name).read_bytes()
            if target.is_file() and target.read_bytes() == content:
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
            target.chmod((ROOT / name).stat().st_mode)
        for target in self.tree.rglob("*"):
            if target.is_file() and str(target.relative_to(self.tree)) not in files:
                target.unlink()

    def configure(self, *options):
        made = command(["cmake", "-S", str(self.tree), "-B", str(self.build_folder), "-G", "Ninja", *options])
        if made.returncode != 0:
            raise RuntimeError(made.stdout + made.stderr)

    def build(self, *targets):
        return command(["cmake", "--build", str(self.build_folder), "-j", "2", "--target", *targets])

    @contextlib.contextmanager
    def with_mistake(self, mistake):
        file = self.tree / mistake.file
        text = file.read_text()
        if text.count(mistake.before) != 1:
            raise NotMade(f"cannot be made, its text stands {text.count(mistake.before)} times in the file")
        try:
            file.write_text(text.replace(mistake.before, mistake.after))
            yield
        finally:
            file.write_text(text)
