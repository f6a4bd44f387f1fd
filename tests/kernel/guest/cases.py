"""The table of cases, in the order in which they run."""

ALL = []


def case(name, quick=False):
    """A case: a function of the lab that returns what it saw, and raises Failure when that is not what should be."""

    def add(function):
        ALL.append((name, quick, function))
        return function

    return add
