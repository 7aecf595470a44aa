#!/usr/bin/env python3
"""Uses the installed library in the build of another project.

    consumer_test.py --build BUILD --cmake CMAKE --compiler CXX --system Linux|Windows
                     [--toolchain FILE] [--emulator COMMAND] CASE

CASE "install" makes the installation. "find_package" and "pkg_config" build and run the program with it.
"package" checks the archive of cpack, and builds and runs the program with it by a compiler command.
"""

import argparse
import os
import pathlib
import shutil
import subprocess

PROGRAM = pathlib.Path(__file__).resolve().parent / "program"
FILES = ["include/qlt/qlt.h", "include/qlt/Sensors/Tracker.h", "lib/pkgconfig/QueltaSDK.pc",
         "include/qltkit/qltkit.h", "lib/pkgconfig/QueltaKit.pc",
         "lib/cmake/QueltaSDK/QueltaSDKConfig.cmake",
         "share/QueltaSDK/headsets/bad_cable.json",
         "share/QueltaSDK/bindings/python/quelta/__init__.py",
         "share/QueltaSDK/bindings/csharp/Samples~/TrackedCamera/TrackedCamera.cs",
         "share/doc/QueltaSDK/LICENSE", "share/doc/QueltaSDK/README.txt"]
SYSTEM_FILES = {
    "Linux": ["lib/libQueltaSDK.so", "lib/libQueltaKit.so",
              "lib/udev/rules.d/70-quelta-orbel-ixo.rules", "bin/qlt"],
    "Windows": ["bin/QueltaSDK.dll", "bin/QueltaKit.dll",
                "lib/libQueltaSDK.dll.a", "lib/QueltaSDK.lib",
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
    cases = ("install", "find_package", "pkg_config", "package")
    parser.add_argument("case", choices=cases)
    arguments = parser.parse_args()
    getattr(Consumer(arguments), arguments.case)()


if __name__ == "__main__":
    main()
