"""The table that the comparisons of tables share: rows of 36 bytes of ASCII numbers."""
import numpy

COLUMNS = [("NUMBER", "ASCII_INTEGER", 1, 8), ("VALUE", "ASCII_REAL", 10, 12), ("COUNT", "ASCII_INTEGER", 23, 12)]


def make_values(rows):
    random = numpy.random.default_rng(1)
    values = numpy.empty(rows, dtype=[("NUMBER", "i4"), ("VALUE", "f8"), ("COUNT", "i4")])
    values["NUMBER"] = numpy.arange(rows)
    values["VALUE"] = numpy.round(random.normal(scale=1000, size=rows), 5)
    values["COUNT"] = random.integers(-9999, 9999, rows)
    return values


def write_product(folder, values):
    """Writes peer.tab and peer.lbl; gives the label's path."""
    with open(folder / "peer.tab", "w", newline="") as file:
        file.writelines("%8d %12.5f %12d\r\n" % row for row in values.tolist())
    objects = "".join(f"OBJECT = COLUMN\nNAME = {name}\nDATA_TYPE = {kind}\nSTART_BYTE = {start}\nBYTES = {size}\n"
                      "END_OBJECT\n" for name, kind, start, size in COLUMNS)
    label = folder / "peer.lbl"
    label.write_text("RECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 36\n^TABLE = \"peer.tab\"\n"
                     "OBJECT = TABLE\nINTERCHANGE_FORMAT = ASCII\nROW_BYTES = 36\n"
                     f"ROWS = {len(values)}\n{objects}END_OBJECT\nEND\n")
    return label
