# test_tree.py: an installation that was moved: what it has, and that nothing but itself is needed to use it.

import os
import pathlib
import re
import shlex
import shutil
import tempfile
import unittest

from installed_tree import files_below, listed_files, run

BUILD = pathlib.Path(os.environ["BUILD"])
C_COMPILER, CXX_COMPILER, FLAGS = os.environ["CC"], os.environ["CXX"], os.environ["CFLAGS"]
FOREIGN = pathlib.Path(__file__).with_name("foreign")
LINE = "return keldom.CONTROL .. keldom.APP"
LINE_GIVES = "07\n"


def install(prefix, check=True, program=(), **changes):
    return run(*program, "cmake", "--install", BUILD, "--prefix", prefix, check=check, **changes)


class InstalledTree(unittest.TestCase):
    """Installed once into old/, and moved to new/ before it is used."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="kel-install-")
        cls.addClassCleanup(holder.cleanup)
        cls.folder = pathlib.Path(holder.name).resolve()
        install(cls.folder / "old")
        cls.manifest = (BUILD / "install_manifest.txt").read_text(encoding="utf-8").splitlines()
        cls.prefix = (cls.folder / "old").rename(cls.folder / "new")
        cls.kel = cls.prefix / "bin/kel"
        cls.version = run(cls.kel, "--version").stdout.removeprefix("kel ").strip()
        cls.thermostat = cls.prefix / "share/luakeldom/examples/thermostat"


class Files(InstalledTree):
    def test_they_are_those_of_the_list(self):
        expected = listed_files(self.kel)
        self.assertEqual(sorted(files_below(self.prefix)), sorted(expected))
        for installed, source in expected.items():
            if source is not None:
                self.assertEqual((self.prefix / installed).read_bytes(), source.read_bytes(), installed)

    def test_none_was_written_elsewhere(self):
        self.assertEqual(sorted(self.manifest), sorted(f"{self.folder}/old/{name}" for name in files_below(self.prefix)))

    def test_no_text_names_the_prefix_or_the_build(self):
        for name in files_below(self.prefix):
            content = (self.prefix / name).read_bytes()
            if not content.startswith((b"\x7fELF", b"!<arch>")): # these have paths for the debugger
                for place in (self.folder, BUILD):
                    self.assertNotIn(str(place).encode(), content, name)


class Tool(InstalledTree):
    def test_it_runs_the_installed_example(self):
        result = run(self.kel, "run", self.thermostat, "--event", "press:climate.target.warmer", "--strict", folder="/")
        self.assertIn("  heating                  room 20.4 °C, target 21.5 °C, mode heat\n", result.stdout)

    def test_it_loads_the_installed_plugin(self):
        plugin = self.prefix / "lib/luakeldom/luakeldom.so"
        aside = plugin.rename(self.folder / "aside.so")
        self.addCleanup(aside.rename, plugin)
        result = run(self.kel, "run", self.thermostat, check=False)
        self.assertEqual(result.returncode, 2)
        self.assertIn(f"{self.prefix}/bin/../lib/luakeldom/luakeldom.so: No such file or directory\n", result.stdout)

    def test_a_link_to_it_finds_the_plugin_too(self):
        link = self.folder / "kel"
        link.symlink_to(self.kel)
        run(link, "run", self.thermostat, "--strict")

    def test_the_example_finds_schema_and_editor_files(self):
        for path in ("../../schema/application.schema.json", "../../lua/keldom.lua"):
            self.assertTrue((self.thermostat / path).is_file(), path)


class ManualPages(InstalledTree):
    def pages(self):
        return sorted((self.prefix / "share/man/man1").iterdir())

    def rendered(self, page):
        return run("man", "--nh", "--nj", "-E", "UTF-8", "-l", page, MANWIDTH="200", LC_ALL="C.UTF-8", MANROFFOPT="-c",
                   MANPAGER="cat").stdout

    def words(self, text):
        return set(re.findall(r"[^\s,.:]+", text))

    def complaints(self, page):
        said = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page, LC_ALL="C.UTF-8", MANROFFSEQ="").stdout
        return re.findall(r"^\w*(?:roff|man|tbl): .*", said, re.MULTILINE)

    def test_nothing_is_wrong_with_their_markup(self):
        for page in self.pages():
            self.assertEqual(self.complaints(page), [], page.name)

    def test_wrong_markup_is_found(self):
        page = self.folder / "wrong.1"
        page.write_text(".TH WRONG 1\n.SH NAME\nwrong \\- has a macro that is none\n.NOSUCH\n", encoding="utf-8")
        self.assertRegex("".join(self.complaints(page)), "warning: .*NOSUCH")

    def test_each_says_all_that_the_help_says(self):
        headings = {"Usage", "Positionals", "REQUIRED", "Options", "Subcommands", "Examples", "Exit", "status"}
        for page in self.pages():
            command = page.stem.split("-")[1:]
            said = self.words(run(self.kel, *command, "--help").stdout) - headings
            self.assertEqual(sorted(said - self.words(self.rendered(page))), [], page.name)

    def test_examples_stand_as_they_are_typed(self):
        for page in self.pages():
            with self.subTest(page.name):
                command = page.stem.split("-")[1:]
                examples = run(self.kel, *command, "--help").stdout.split("\nExamples:\n")[1].split("\n\n")[0]
                text = self.rendered(page)
                for line in examples.splitlines():
                    self.assertIn(f"       {line.strip()}\n", text)

    def test_the_index_of_pages_can_tell_what_each_is_about(self):
        for page in self.pages():
            self.assertRegex(run("lexgrog", page).stdout, rf'"{page.stem} - [A-Z]', page.name)


class ForeignPrograms(InstalledTree):
    def test_a_project_of_somebody_else(self):
        build = self.folder / "foreign"
        configured = run("cmake", "-G", "Ninja", "-S", FOREIGN, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}",
                         f"-DCMAKE_C_FLAGS={FLAGS}", f"-DCMAKE_CXX_FLAGS={FLAGS}", f"-DCMAKE_C_COMPILER={C_COMPILER}",
                         f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}")
        self.assertNotIn("Warning", configured.stdout)
        run("cmake", "--build", build, "-j", "1")
        plugin = self.prefix / "lib/luakeldom/luakeldom.so"
        self.assertEqual(run(build / "loading_host", plugin, LINE).stdout, LINE_GIVES)
        self.assertEqual(run(build / "linked_host", LINE).stdout, LINE_GIVES)
        self.assertEqual(run(build / "thermostat", self.thermostat).stdout, "table 21.5 0 0\n")

    def test_pkg_config_and_a_compiler(self):
        def ask(*what):
            return shlex.split(run("pkg-config", *what, PKG_CONFIG_PATH=str(self.prefix / "lib/pkgconfig")).stdout)
        host = self.folder / "loading_host"
        run(C_COMPILER, "-std=c99", *shlex.split(FLAGS), FOREIGN / "loading_host.c", FOREIGN / "small_host.c", "-rdynamic",
            "-o", host, *ask("--cflags", "luakeldom", "lua5.1"), *ask("--libs", "luakeldom", "lua5.1"), "-ldl")
        plugin = pathlib.Path(*ask("--variable=plugindir", "luakeldom")) / "luakeldom.so"
        self.assertEqual(run(host, plugin, LINE).stdout, LINE_GIVES)
        self.assertEqual(ask("--modversion", "luakeldom"), [self.version])


class Packages(InstalledTree):
    def configure(self, request, *options):
        project = self.folder / "asks"
        project.mkdir(exist_ok=True)
        (project / "CMakeLists.txt").write_text(f"cmake_minimum_required(VERSION 3.25)\nproject(asks LANGUAGES C)\n{request}\n")
        shutil.rmtree(project / "build", ignore_errors=True)
        return run("cmake", "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}", *options, check=False)

    def test_only_its_own_version_is_accepted(self):
        result = self.configure(f"find_package(luakeldom {self.version} EXACT REQUIRED)")
        self.assertEqual(result.returncode, 0, result.stdout)
        result = self.configure("find_package(luakeldom 99.0 REQUIRED)")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(f"luakeldomConfig.cmake, version: {self.version}\n", result.stdout)

    def test_a_firmware_gets_headers_and_sources_but_no_host(self):
        # A machine without a system, as a toolchain file tells it.
        request = ("set(CMAKE_SYSTEM_NAME Generic)\nfind_package(luakeldom REQUIRED COMPONENTS plugin)\n"
                   "if(TARGET luakeldom::kelhost)\n  message(FATAL_ERROR there)\nendif()\n"
                   "get_target_property(sources luakeldom::plugin INTERFACE_SOURCES)\nmessage(STATUS \"<${sources}>\")")
        result = self.configure(request)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn(f"{self.prefix}/share/luakeldom/src/registration.cpp", result.stdout)

    def test_a_host_for_another_machine_is_refused_with_the_reason(self):
        result = self.configure("set(CMAKE_SYSTEM_NAME Generic)\nfind_package(luakeldom REQUIRED COMPONENTS kelhost)")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("the reference host was built for another machine", " ".join(result.stdout.split()))


class Prefixes(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="kel-install-")
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name).resolve()

    def check_refused(self, result, reason):
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(reason, " ".join(result.stdout.split()))

    def test_a_staging_folder_stands_before_the_prefix(self):
        install("/opt/kel", DESTDIR=str(self.folder))
        self.assertEqual([str(place) for place in self.folder.iterdir()], [f"{self.folder}/opt"])
        kel = self.folder / "opt/kel/bin/kel"
        self.assertEqual(sorted(files_below(self.folder / "opt/kel")), sorted(listed_files(kel)))

    def test_a_file_in_the_way(self):
        (self.folder / "file").write_text("")
        self.check_refused(install(self.folder / "file/kel", check=False),
                           f'Cannot install into "{self.folder}/file/kel": "{self.folder}/file" is a file, expected a folder')

    def test_a_folder_that_cannot_be_written_to(self):
        (self.folder / "closed").mkdir(mode=0o555)
        # Who is root may write everywhere, unless this is taken away.
        program = ("setpriv", "--bounding-set=-dac_override") if os.geteuid() == 0 else ()
        result = install(self.folder / "closed/kel/a", check=False, program=program)
        self.check_refused(result, f'Cannot install into "{self.folder}/closed/kel/a": no permission to write to '
                                   f'"{self.folder}/closed". Name another folder with PREFIX, or install as root')
        self.assertEqual(list((self.folder / "closed").iterdir()), [])


if __name__ == "__main__":
    unittest.main()
