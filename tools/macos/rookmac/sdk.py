"""The generated SDK folder; written anew only when the facts, the supplement or the generators changed."""

import hashlib
import shutil

from . import stubs
from .facts import SUPPLEMENT, TABLE, Facts
from .headers import HeaderWriter


def fingerprint():
    digest = hashlib.sha256()
    own = [path for path in TABLE.parent.parent.joinpath("rookmac").glob("*.py")
           if path.stem in ("facts", "declarators", "headers", "stubs", "sdk")]  # fmt: skip
    for path in sorted([TABLE, *SUPPLEMENT.iterdir(), *own]):
        digest.update(path.name.encode() + path.read_bytes())
    return digest.hexdigest()


def ensure(sdk):
    """Returns whether the SDK had to be written."""
    stamp = sdk / "fingerprint"
    current = fingerprint()
    if stamp.exists() and stamp.read_text() == current:
        return False
    fresh = sdk.with_suffix(".new")
    shutil.rmtree(fresh, ignore_errors=True)
    facts = Facts()
    HeaderWriter(facts).write(fresh)
    stubs.write(facts, fresh)
    replace_changed(fresh, sdk)
    shutil.rmtree(fresh)
    stamp.write_text(current)
    return True


def replace_changed(fresh, sdk):
    """Files that stay the same keep their time, so that nothing is compiled again because of them."""
    wanted = {path.relative_to(fresh) for path in fresh.rglob("*") if path.is_file()}
    for old in [path for path in sdk.rglob("*") if path.is_file()]:
        if old.relative_to(sdk) not in wanted:
            old.unlink()
    for name in wanted:
        source, target = fresh / name, sdk / name
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
