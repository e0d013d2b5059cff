"""Tables, printed as text and written as Markdown."""

from collections.abc import Sequence
from dataclasses import dataclass, field


@dataclass
class Table:
    title: str
    columns: Sequence[str]
    notes: str = ""
    rows: list[list[str]] = field(default_factory=list)

    def add(self, *cells: str) -> None:
        assert len(cells) == len(self.columns) and all(cells), f"a hole in the row {cells}"
        self.rows.append(list(cells))
        print(f"  {' | '.join(cells)}", flush=True)

    def _lines(self, separator: str, edge: str) -> list[str]:
        grid = [list(self.columns), *self.rows]
        widths = [max(map(len, column)) for column in zip(*grid)]
        return [edge + separator.join(cell.ljust(width) for cell, width in zip(row, widths)) + edge
                for row in grid]

    def text(self) -> str:
        return "\n".join([self.title, *self._lines("  ", ""), *filter(None, [self.notes]), ""])

    def markdown(self) -> str:
        head, *body = self._lines(" | ", "|")
        rule = "|" + "|".join("---" for _ in self.columns) + "|"
        notes = [self.notes, ""] if self.notes else []
        return "\n".join([f"## {self.title}", "", *notes, head, rule, *body, ""])


def verdict(value: float, unit: str, target: float, is_ceiling: bool = True) -> str:
    """A figure beside its target."""
    kept = value <= target if is_ceiling else value >= target
    sign = "≤" if is_ceiling else "≥"
    return f"{value:.3g} {unit} (target {sign} {target:.3g}: {'kept' if kept else 'MISSED'})"
