"""What is compared with what: one row for each line of the report.

A row names its benchmarks; times of several are summed. The goal is the greatest ratio of our time to the peer's that
reaches it.
"""

from dataclasses import dataclass, field


@dataclass
class Row:
    operation: str
    ours: list
    peer: str
    peers: list
    goal: float | None = None
    limit: list = field(default_factory=list)  # a benchmark that does no more than must be done
    limit_cycles: float | None = None
    times: int = 1  # of the peer


NAMES = {
    "zlib": "zlib",
    "libdeflate": "libdeflate",
    "isal": "ISA-L",
    "openssl": "OpenSSL",
    "openssl_evp": "OpenSSL, EVP",
    "nettle": "nettle",
    "inih": "inih",
    "simpleini": "SimpleIni",
    "property_tree": "Boost.PropertyTree",
    "plain_loop": "plain loop",
    "memcpy": "memcpy",
    "opencv": "OpenCV"
}
CRC32_SIZES = {928: "928 B", 20480: "20 KiB", 716800: "700 KiB"}
MD5_SIZES = {12: "12 B", 16: "16 B", 36: "36 B", 1048576: "1 MiB"}
MD5_CYCLES_A_BLOCK = 288
INI_SIZES = {"130/6": "130 keys in 6 sections", "2000/100": "2,000 keys in 100 sections"}
GRIDS = {"164/104": "two grids of 164x104", "640/400": "two grids of 640x400"}
BLOCKS = ["basic", "prefilter", "extend_chop", "disp_calc", "gpm", "d2d", "d2c", "rectify"]


# Each path and the peer of its kind; cycles for 64 bytes at one multiply every two cycles.
CRC32_PATHS = {"portable": ("zlib", None), "clmul": ("libdeflate", 16), "clmul512": ("isal", 4)}


def crc32_rows():
    for size, name in CRC32_SIZES.items():
        for path, (peer, cycles) in CRC32_PATHS.items():
            yield Row(f"CRC-32, {path}, {name}", [f"crc32/{path}/{size}"], NAMES[peer], [f"crc32/{peer}/{size}"], 1.0,
                      limit_cycles=cycles and size / 64 * cycles)
        for peer in ("zlib", "libdeflate", "isal"):
            yield Row(f"CRC-32, as called, {name}", [f"crc32/ours/{size}"], NAMES[peer], [f"crc32/{peer}/{size}"])


def md5_rows():
    for size, name in MD5_SIZES.items():
        blocks = (size + 8) // 64 + 1
        goals = {"openssl": 1.0 if blocks == 1 else 1 / 0.98}
        for peer in ("openssl", "openssl_evp", "nettle"):
            yield Row(
                f"MD5, {name}", [f"md5/ours/{size}"], NAMES[peer], [f"md5/{peer}/{size}"], goals.get(peer),
                limit_cycles=MD5_CYCLES_A_BLOCK * blocks)
    for to, name in {"null": "/dev/null", "pipe": "a pipe"}.items():
        yield Row(f"MD5 with its trace to {name}", [f"md5_trace/ours/{to}"], "its text by stdio",
                  [f"md5_trace/stdio/{to}"], 1.2)


def configuration_rows():
    for size, name in INI_SIZES.items():
        for peer, goal in {"inih": 0.4, "simpleini": None, "property_tree": None}.items():
            yield Row(f"INI text, {name}", [f"ini/ours/{size}"], NAMES[peer], [f"ini/{peer}/{size}"], goal)
    yield Row("load_de_input_configs", ["load/ours"], "inih, converted", ["load/inih"], 0.6)
    yield Row("set_depth_engine_config", ["apply/ours"], "copies of all tables", ["apply/copies"])
    for direction in ("set", "get"):
        for block in BLOCKS:
            yield Row(f"{direction} entry point, {block}", [f"{direction}/{block}/ours"], "copies alone",
                      [f"{direction}/{block}/copies"])


# Goals of each path against the plain loop and against copying. That of the build as it comes is for what it chooses.
CONVERSION_PATHS = {"portable": (None, None), "sse2": (None, None), "avx2": (0.1, 2.0), "ours": (0.1, None)}
# Goals of each path against OpenCV: Brown's model, the equidistant one.
GENERATION_PATHS = {"portable": (0.7, 0.6), "avx2": (0.4, 0.6), "ours": (0.7, 0.6)}


def as_called(path):
    return "as called" if path == "ours" else path


def conversion_rows():
    for size, name in GRIDS.items():
        for path, goals in CONVERSION_PATHS.items():
            for peer, goal in zip(("plain_loop", "memcpy"), goals):
                if peer == "plain_loop" or goal:
                    yield Row(f"LUT conversion, {as_called(path)}, {name}", [f"lut_conversion/{path}/{size}"],
                              NAMES[peer], [f"lut_conversion/{peer}/{size}"], goal,
                              [f"lut_conversion/bytes_moved/{size}"])


def generation_rows():
    for path, goals in GENERATION_PATHS.items():
        for model, goal in zip(("brown", "equidistant"), goals):
            yield Row(f"LUT generation, {model}, {as_called(path)}, 164x104", [f"lut_generation/{model}/{path}"],
                      NAMES["opencv"], [f"lut_generation/{model}/opencv"], goal)


def rectification_rows():
    yield Row("stereo rectification", ["rectification/ours"], "OpenCV, with regions", ["rectification/opencv"], 0.1)


def image_rows():
    for bits in (3, 4):
        parts = [f"image/{part}/{bits}" for part in ("generation", "conversion", "checksums")]
        yield Row(f"calibration image 1280x800, sample bits {bits}", [f"image/ours/{bits}"], "its parts", parts, 1.3)
    yield Row("calibration image of 8 configurations", ["growth/configurations/8"], "8 times that of 1",
              ["growth/configurations/1"], 1.1, times=8)


def process_rows():
    yield Row("start of a host that loads the library", ["host/ours"], "libdeflate", ["host/libdeflate"], 1.2,
              ["host/nothing"])
    yield Row("load of the library alone", ["dlopen/ours"], "libdeflate", ["dlopen/libdeflate"])


def rows():
    for group in (crc32_rows, md5_rows, configuration_rows, conversion_rows, generation_rows,
                  rectification_rows, image_rows, process_rows):
        yield from group()
