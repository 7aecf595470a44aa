#!/usr/bin/env python3
"""Uses the installed library in the build of another project.

    consumer_test.py --build BUILD --cmake CMAKE --compiler CXX --system Linux|Windows
                     [--toolchain FILE] [--emulator COMMAND] CASE

CASE "install" makes the installation. "find_package" and "pkg_config" build and run the program with it.
"versions" compares all versions in it. "wheel" makes a wheel of the Python module, installs it into an empty
environment, and uses it there; then it uses the module in the installation itself.
"package" checks the archive of cpack, and builds and runs the program with it by a compiler command.
"""

import argparse
import os
import pathlib
import re
import shutil
import struct
import subprocess

PROGRAM = pathlib.Path(__file__).resolve().parent / "program"
FILES = ["include/qlt/qlt.h", "include/qlt/Sensors/Tracker.h", "lib/pkgconfig/QueltaSDK.pc",
         "include/qltkit/qltkit.h", "include/qltkit/qltkit_c_api.h", "lib/pkgconfig/QueltaKit.pc",
         "lib/cmake/QueltaSDK/QueltaSDKConfig.cmake",
         "share/QueltaSDK/headsets/bad_cable.json",
         "share/QueltaSDK/bindings/python/quelta/__init__.py",
         "share/QueltaSDK/bindings/csharp/Samples~/TrackedCamera/TrackedCamera.cs",
         "share/doc/QueltaSDK/LICENSE", "share/doc/QueltaSDK/README.txt"]
SYSTEM_FILES = {
    "Linux": ["lib/libQueltaSDK.so", "lib/libQueltaKit.so",
              "lib/udev/rules.d/70-quelta-orbel-ixo.rules", "bin/qlt"],
    "Windows": ["bin/QueltaSDK.dll", "bin/QueltaKit.dll",
                "lib/libQueltaSDK.dll.a", "lib/QueltaSDK.lib", "lib/QueltaKit.lib",
                "bin/qlt.exe"],
}


class Consumer:
    def __init__(self, arguments):
        self.arguments = arguments
        self.windows = arguments.system == "Windows"
        self.folder = pathlib.Path(arguments.build, "consumer")
        self.prefix = self.folder / "prefix"

    def install(self):
        shutil.rmtree(self.prefix, ignore_errors=True)
        run([self.arguments.cmake, "--install", self.arguments.build, "--prefix", self.prefix])

    def find_package(self):
        build = self.folder / "find_package"
        shutil.rmtree(build, ignore_errors=True)
        # A toolchain file may hide every folder except the one in the package's own variable.
        place = (f"-DQueltaSDK_DIR={self.prefix}/lib/cmake/QueltaSDK" if self.windows
                 else f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run([self.arguments.cmake, "-G", "Ninja", "-S", PROGRAM, "-B", build,
             place,
             f"-DCMAKE_CXX_COMPILER={self.arguments.compiler}",
             f"-DCMAKE_TOOLCHAIN_FILE={self.arguments.toolchain}"])
        run([self.arguments.cmake, "--build", build])
        self.check_program(build / "consumer")

    def pkg_config(self):
        place = dict(os.environ, PKG_CONFIG_LIBDIR=f"{self.prefix}/lib/pkgconfig")
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "QueltaKit"], env=place,
                               check=True, capture_output=True, text=True).stdout.split()
        self.compile("pkg_config", flags)

    def versions(self):
        """The header, the packages, the libraries, the Python module and the Unity package agree."""
        def found(file, pattern):
            return re.search(pattern, (self.prefix / file).read_text(encoding="utf-8")).group(1)
        version = found("include/qlt/Version.h", r'_STRING "([\d.]+)"')
        parts = [found("include/qlt/Version.h", rf"_{part} (\d+)") for part in
                 ("MAJOR", "MINOR", "PATCH")]
        bindings = "share/QueltaSDK/bindings"
        versions = {
            "cmake": found("lib/cmake/QueltaSDK/QueltaSDKConfigVersion.cmake",
                           r'PACKAGE_VERSION "([\d.]+)"'),
            "core": found("lib/pkgconfig/QueltaSDK.pc", r"Version: ([\d.]+)"),
            "kit": found("lib/pkgconfig/QueltaKit.pc", r"Version: ([\d.]+)"),
            "python": found(f"{bindings}/python/quelta/__init__.py", r'__version__ = "([\d.]+)"'),
            "unity": found(f"{bindings}/csharp/package.json", r'"version": "([\d.]+)"'),
            "parts": ".".join(parts)}
        for library in ("QueltaSDK", "QueltaKit"):
            if self.windows:
                versions.update(resource_of(self.prefix / f"bin/{library}.dll"))
            else:
                file = (self.prefix / f"lib/lib{library}.so").resolve().name
                versions[library] = file.split(".so.")[1]
        assert set(versions.values()) == {version}, f"{version} is the header's: {versions}"

    def wheel(self):
        script = pathlib.Path(__file__).parents[2] / "scripts/wheel.sh"
        folder = self.folder / "wheel"
        shutil.rmtree(folder, ignore_errors=True)
        python = "/usr/bin/python3"  # Debian's own, because that has setuptools and wheel
        run([script, self.prefix, folder], env=dict(os.environ, PYTHON=python))
        wheel, = folder.glob("quelta-*.whl")
        run([python, "-m", "venv", folder / "venv"])
        offline = dict(os.environ, PIP_NO_INDEX="1", PIP_DISABLE_PIP_VERSION_CHECK="1")
        run([folder / "venv/bin/pip", "install", "-q", wheel], env=offline)
        program = pathlib.Path(__file__).parent / "wheel_program.py"
        clean = {key: value for key, value in os.environ.items()
                 if key not in ("QUELTA_SDK", "QUELTA_KIT", "PYTHONPATH", "LD_LIBRARY_PATH")}
        run([folder / "venv/bin/python", "-I", program, folder / "venv"], cwd=folder, env=clean)
        module = self.prefix / "share/QueltaSDK/bindings/python"
        run([python, program, self.prefix], cwd=folder, env=dict(clean, PYTHONPATH=str(module)))

    def package(self):
        """Uses only the archive, which is unpacked in its own folder."""
        shutil.rmtree(self.folder / "package", ignore_errors=True)
        generator = "ZIP" if self.windows else "TGZ"
        run([pathlib.Path(self.arguments.cmake).with_name("cpack"), "-G", generator, "-B",
             self.folder / "package"], cwd=self.arguments.build, stdout=subprocess.DEVNULL)
        archive, = (self.folder / "package").glob("*." + ("zip" if self.windows else "tar.gz"))
        shutil.unpack_archive(archive, self.folder / "package")
        header, = (self.folder / "package").glob("QueltaSDK-*/**/include/qlt/qlt.h")
        self.prefix = header.parents[2]
        files = FILES + SYSTEM_FILES[self.arguments.system]
        missing = [file for file in files if not (self.prefix / file).is_file()]
        assert not missing, f"the package lacks {missing}"
        assert "QueltaSDK" in self.output_of(self.prefix / "bin/qlt", "info")
        self.compile("packaged", [f"-I{self.prefix}/include", f"-L{self.prefix}/lib",
                                  "-lQueltaKit", "-lQueltaSDK"])

    def compile(self, name, flags):
        program = self.folder / name
        # Put this after the import library; it makes only the compiler's own libraries static.
        system = (["-static-libgcc", "-Wl,-Bstatic"] if self.windows
                  else ["-pthread", f"-Wl,-rpath,{self.prefix}/lib"])
        run([self.arguments.compiler, "-std=c++17", PROGRAM / "main.cpp", "-o", program, *flags,
             *system])
        self.check_program(program)

    def check_program(self, program):
        assert "Quelta Orbel Ixo" in self.output_of(program)

    def output_of(self, program, *options):
        """The standard output of a program that finds the library in the installation."""
        found = dict(os.environ, WINEPATH=f"Z:{self.prefix}/bin")
        if self.windows:
            program = program.with_suffix(".exe")
        emulator = [self.arguments.emulator] if self.arguments.emulator else []
        return run([*emulator, program, *options], env=found, capture_output=True, text=True).stdout


def resource_of(dll):
    """The four versions in the resource of a DLL."""
    data = dll.read_bytes()
    fixed = data.index(struct.pack("<II", 0xFEEF04BD, 0x10000)) + 8
    high, low, product_high, product_low = struct.unpack_from("<IIII", data, fixed)
    texts = {name: re.search(name.encode("utf-16-le") + rb"\0+((?:[\d.]\0)+)", data).group(1)
             .decode("utf-16-le") for name in ("FileVersion", "ProductVersion")}
    for name, upper, lower in (("file", high, low), ("product", product_high, product_low)):
        texts[name] = f"{upper >> 16}.{upper & 0xFFFF}.{lower >> 16}"
    return {f"{dll.name} {name}": text for name, text in texts.items()}


def run(command, **options):
    done = subprocess.run(command, check=False, stdin=subprocess.DEVNULL, **options)
    assert done.returncode == 0, f"{command} ended with {done.returncode}: {done.stderr}"
    return done


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("build", "cmake", "compiler", "system"):
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--toolchain", default="")
    parser.add_argument("--emulator", default="")
    cases = ("install", "find_package", "pkg_config", "versions", "wheel", "package")
    parser.add_argument("case", choices=cases)
    arguments = parser.parse_args()
    getattr(Consumer(arguments), arguments.case)()


if __name__ == "__main__":
    main()
