"""What can be seen in pictures of the screen."""

from session import SCREEN

GROUND = (37, 37, 40)  # of the panel


def changed_area(before, after):
    """The box around what differs, in the bars at the edges of the screen."""
    from PIL import ImageChops
    width, height = SCREEN
    bar = 40
    for box in [(0, 0, width, bar), (0, height - bar, width, height)]:
        difference = ImageChops.difference(before.crop(box), after.crop(box)).convert("L").point(
            lambda value: 255 if value > 24 else 0)
        found = difference.getbbox()
        if found:
            return (found[0] + box[0], found[1] + box[1], found[2] + box[0], found[3] + box[1])
    return None


def luminance(color):
    parts = [value / 255 for value in color]
    parts = [part / 12.92 if part <= 0.03928 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]


def contrast(one, other):
    lighter, darker = sorted([luminance(one), luminance(other)], reverse=True)
    return (lighter + 0.05) / (darker + 0.05)


def panel_area(picture):
    """Where the panel's ground is, by its colour."""
    width, height = SCREEN
    pixels = picture.load()
    columns = [x for x in range(width) if sum(pixels[x, y] == GROUND for y in range(0, height, 6)) > 30]
    if not columns:
        return None
    middle = (columns[0] + columns[-1]) // 2
    rows = [y for y in range(height) if sum(pixels[x, y] == GROUND
                                            for x in range(columns[0], columns[-1], 12)) > 8]
    return (columns[0], rows[0], columns[-1] + 1, rows[-1] + 1) if rows and middle else None
