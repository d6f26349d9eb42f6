"""Draws a picture of lines in two axes, as SVG, into docs/."""

import math
import os

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WIDTH, HEIGHT, LEFT, BOTTOM, TOP, RIGHT = 760, 420, 92, 50, 40, 150
COLOURS = ("#0060a8", "#b04000", "#207020", "#703090", "#a08000", "#008080", "#c02060", "#404040",
           "#6a5acd", "#2e8b57")


class Chart:
    """An SVG picture with two axes. Each may go by powers of ten."""

    def __init__(self, title, across, up, x_range, y_range, powers=False, x_powers=False):
        self._x, self._y, self._powers, self._x_powers = x_range, y_range, powers, x_powers
        self._parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
            f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
            f'<title>{title}</title><rect width="100%" height="100%" fill="#fff"/>',
            self._text(LEFT, 22, title, size=15),
            self._text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 12, across, anchor="middle"),
            f'<g transform="rotate(-90 18 {HEIGHT / 2})">'
            + self._text(18, HEIGHT / 2, up, anchor="middle") + "</g>"]
        self._names = 0

    @staticmethod
    def _text(x, y, text, anchor="start", size=12, colour="#222"):
        return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" '
                f'fill="{colour}">{text}</text>')

    @staticmethod
    def _part(value, low, high, powers):
        if powers:
            value, low, high = math.log10(max(value, low)), math.log10(low), math.log10(high)
        return (value - low) / (high - low)

    def _at_x(self, value):
        return LEFT + self._part(value, *self._x, self._x_powers) * (WIDTH - LEFT - RIGHT)

    def _at_y(self, value):
        part = self._part(value, *self._y, self._powers)
        return HEIGHT - BOTTOM - part * (HEIGHT - BOTTOM - TOP)

    def grid(self, x_marks, y_marks):
        for value, name in x_marks:
            x = self._at_x(value)
            self._parts.append(f'<path d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#e4e4e4"/>'
                               + self._text(x, HEIGHT - BOTTOM + 16, name, "middle"))
        for value, name in y_marks:
            y = self._at_y(value)
            self._parts.append(f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="#e4e4e4"/>'
                               + self._text(LEFT - 6, y + 4, name, "end"))

    def line(self, points, name):
        colour = COLOURS[self._names % len(COLOURS)]
        path = " ".join(f"{self._at_x(x):.1f},{self._at_y(y):.1f}" for x, y in points)
        y = TOP + 16 + 20 * self._names
        self._parts.append(
            f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="1.6"/>'
            + self._text(WIDTH - RIGHT + 12, y, name, colour=colour))
        self._names += 1

    def save(self, name):
        with open(os.path.join(ROOT, "docs", name), "w", encoding="utf-8") as file:
            file.write("\n".join(self._parts) + "\n</svg>\n")
