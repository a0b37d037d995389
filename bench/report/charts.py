"""Small line charts as SVG."""

import math

WIDTH, HEIGHT = 560, 320
LEFT, RIGHT, TOP, BOTTOM = 70, 150, 36, 48
COLORS = ["#1f6fb4", "#d1602f", "#3b8f4a", "#8a4fb0"]


def time_text(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def decades(low, high):
    """The powers of ten that enclose both."""
    return [10.0**e for e in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)]


def steps(high):
    """Round numbers from 0 to the first that is not below the highest."""
    size = 10.0 ** math.floor(math.log10(high / 4))
    step = next(size * factor for factor in (1, 2, 5, 10) if size * factor * 5 >= high)
    return [step * i for i in range(math.ceil(high / step) + 1)]


class Chart:
    """Lines of times over whole numbers."""

    def __init__(self, title, x_label, lines, logarithmic):
        self.title, self.x_label, self.lines, self.logarithmic = title, x_label, lines, logarithmic
        points = [point for line in lines.values() for point in line]
        self.xs = sorted({x for x, _ in points})
        times = [ns for _, ns in points]
        self.ticks = decades(min(times), max(times)) if logarithmic else steps(max(times))

    def x(self, value):
        share = (value - self.xs[0]) / (self.xs[-1] - self.xs[0])
        return LEFT + share * (WIDTH - LEFT - RIGHT)

    def y(self, ns):
        scale = math.log10 if self.logarithmic else float
        low, high = scale(self.ticks[0]), scale(self.ticks[-1])
        return HEIGHT - BOTTOM - (scale(ns) - low) / (high - low) * (HEIGHT - TOP - BOTTOM)

    def frame(self):
        right, bottom = WIDTH - RIGHT, HEIGHT - BOTTOM
        yield f'<text x="{LEFT}" y="20" font-size="14" font-weight="bold">{self.title}</text>'
        for tick in self.ticks:
            y = self.y(tick)
            yield f'<path d="M{LEFT} {y:.1f}H{right}" stroke="#ddd"/>'
            label = time_text(tick) if tick else "0"
            yield f'<text x="{LEFT - 6}" y="{y + 4:.1f}" text-anchor="end">{label}</text>'
        for value in self.xs:
            yield f'<text x="{self.x(value):.1f}" y="{bottom + 18}" text-anchor="middle">{value}</text>'
        yield f'<text x="{(LEFT + right) / 2}" y="{HEIGHT - 10}" text-anchor="middle">{self.x_label}</text>'

    def line(self, name, points, color):
        places = [(self.x(x), self.y(ns)) for x, ns in sorted(points)]
        path = "L".join(f"{x:.1f} {y:.1f}" for x, y in places)
        yield f'<path d="M{path}" fill="none" stroke="{color}" stroke-width="2"/>'
        for x, y in places:
            yield f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{color}"/>'

    def legend(self, name, number, color):
        y = TOP + 10 + 20 * number
        x = WIDTH - RIGHT + 16
        yield f'<path d="M{x} {y}h18" stroke="{color}" stroke-width="2"/>'
        yield f'<text x="{x + 24}" y="{y + 4}">{name}</text>'

    def svg(self):
        parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
            f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="11">',
            '<rect width="100%" height="100%" fill="white"/>',
            *self.frame(),
        ]
        for number, (name, points) in enumerate(self.lines.items()):
            color = COLORS[number % len(COLORS)]
            parts += [*self.line(name, points, color), *self.legend(name, number, color)]
        return "\n".join([*parts, "</svg>", ""])


def growth_charts(times):
    """Charts by file name, from the times of the benchmarks growth/*."""
    subjects = {
        "lut_generation": "LUT generation",
        "lut_conversion": "LUT conversion",
        "image": "Whole calibration image"
    }
    for subject, title in subjects.items():
        lines = {}
        for name, ns in times.items():
            parts = name.split("/")
            if parts[:2] != ["growth", subject]:
                continue
            width, height, bits = parts[2:]
            lines.setdefault((int(width), int(height)), []).append((int(bits), ns))
        lines = {f"{width} x {height}": lines[width, height] for width, height in sorted(lines)}
        yield f"growth_{subject}.svg", Chart(title, "sample bits", lines, True)
    prefix = "growth/configurations/"
    line = [(int(name.removeprefix(prefix)), ns) for name, ns in times.items() if name.startswith(prefix)]
    title = "Whole calibration image, 1280 x 800, sample bits 4"
    yield "growth_configurations.svg", Chart(title, "configurations", {"measured": line}, False)
