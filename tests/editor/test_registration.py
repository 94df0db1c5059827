# test_registration.py: editors and luacheck are told of what is registered, of all of it, and of nothing else.

import json
import unittest

from editor_files import DEFINITIONS, PROJECT, STANDARD, THERMOSTAT, EditorTest, reference, registered_classes


def class_differences(definitions):
    """Between the classes of handles that are defined and those that are registered."""
    defined = {
        each.name: (each.parent or "", {function.name for function in each.functions})
        for each in definitions.classes.values()
        if not each.is_module and not each.fields
    }
    registered, _ = registered_classes()
    found = [f"class {name}" for name in sorted(set(defined) ^ set(registered))]
    for name in sorted(set(defined) & set(registered)):
        if defined[name][0] != registered[name][0]:
            found.append(f"parent of {name}")
        found += [f"{name}:{method}" for method in sorted(defined[name][1] ^ registered[name][1])]
    return found


def module_differences(definitions, registered):
    found = []
    for module in (each for each in definitions.classes.values() if each.is_module):
        defined = {function.name: "function" for function in module.functions}
        defined.update((constant.name, str(constant.value)) for constant in module.constants)
        real = {name: text.split(": ")[0] for name, text in registered[module.name].items()}  # "function: 0x55..."
        for name in sorted(set(defined) | set(real)):
            if defined.get(name) != real.get(name):
                found.append(f"{module.name}.{name}")
    return found


class Registration(EditorTest):
    def definitions(self, *changes):
        """From copies with changes, (text, its replacement), each made once."""
        paths = []
        for path in DEFINITIONS:
            text = path.read_text(encoding="utf-8")
            for old, new in changes:
                text = text.replace(old, new, 1)
            paths.append(self.folder / self.write(path.name, text))
        return reference.read_definitions(paths)

    def test_classes_have_the_metatables_parents_and_methods(self):
        definitions = self.definitions()
        self.assertEqual(class_differences(definitions), [])
        self.assertEqual([each.name for each in definitions.chain("table_object")],
                         ["table_object", "control_object", "keldom_object"])

    def test_modules_have_the_functions_and_constants(self):
        definitions = self.definitions()
        self.assertEqual(module_differences(definitions, self.registered_globals()), [])
        modules = [each.name for each in definitions.classes.values() if each.is_module]
        self.assertEqual(modules, ["keldom", "kel", "os"])

    def test_functions_give_handles_of_the_class_that_is_defined(self):
        _, handles = registered_classes()
        functions = self.definitions().classes["keldom"].functions
        given = {function.name: next(function.returns[0].type.names()) for function in functions}
        del given["get_object"]  # gives any
        self.assertEqual(given, handles)

    def test_a_method_too_few_or_too_many_is_found(self):
        missing = self.definitions(("function layer_instance_object:get_x(", "function layer_instance_object:get_z("))
        self.assertEqual(class_differences(missing), ["layer_instance_object:get_x", "layer_instance_object:get_z"])

    def test_another_parent_is_found(self):
        changed = self.definitions(("@class group_object: keldom_object", "@class group_object: control_object"))
        self.assertEqual(class_differences(changed), ["parent of group_object"])

    def test_a_class_too_few_or_too_many_is_found(self):
        changed = self.definitions(
            ("@class screen_object: keldom_object", "@class page_object: keldom_object"),
            ("local screen_object", "local page_object"),
            ("screen_object[]", "page_object[]"), ("screen_object?", "page_object?"),
            ("fun(handle: screen_object): screen_object", "fun(handle: page_object): page_object"),
        )
        self.assertEqual(class_differences(changed), ["class page_object", "class screen_object"])

    def test_a_function_or_constant_too_few_or_too_many_is_found(self):
        registered = self.registered_globals()
        changed = self.definitions(
            ("function keldom.get_group(", "function keldom.get_bar("),
            ("keldom.SCREEN = 6", "keldom.SCREEN = 5"),
            ("function kel.log(", "function kel.write("),
            ("kel.TOP = 1", "kel.HEAD = 1"),
            ("function os.clock(", "function os.exit("),
        )
        self.assertEqual(
            sorted(module_differences(changed, registered)),
            ["kel.HEAD", "kel.TOP", "kel.log", "kel.write", "keldom.SCREEN", "keldom.get_bar", "keldom.get_group",
             "os.clock", "os.exit"],
        )


class Standard(EditorTest):
    def differences(self, standard):
        """Between the globals of luacheck's standard, a Lua text, and those that scripts find."""
        listed = self.print_of(
            f"local standard = (function() {standard}\nend)()\n"
            "for name, held in pairs(standard.read_globals) do\n"
            "  if type(name) == 'number' then print(held) else\n"
            "    print(name)\n"
            "    for field in pairs(held.fields or {}) do print(name, field) end\n"
            "  end\n"
            "end")
        found = {name: set(fields) for name, fields in self.registered_globals().items()}
        names = set(found) | {f"{name}.{field}" for name, fields in found.items() for field in fields}
        return sorted(names ^ {".".join(row) for row in listed})

    def test_it_has_what_scripts_find(self):
        self.assertEqual(self.differences(STANDARD.read_text(encoding="utf-8")), [])

    def test_a_name_too_few_or_too_many_is_found(self):
        text = STANDARD.read_text(encoding="utf-8")
        for old, new in (("get_screen", "get_page"), ('"queue_event"', '"send_event"'), ('"setfenv"', '"dofile"')):
            with self.subTest(old):
                self.assertEqual(len(self.differences(text.replace(old, new, 1))), 2)


class Settings(EditorTest):
    def test_the_thermostats_settings_switch_off_what_scripts_do_not_find(self):
        settings = json.loads((THERMOSTAT / ".luarc.json").read_text(encoding="utf-8"))
        self.assertEqual(settings["runtime.version"], "Lua 5.1")
        (library,) = settings["workspace"]["library"]
        self.assertEqual((THERMOSTAT / library).resolve(), PROJECT / "lua")
        builtin = settings["runtime.builtin"]
        self.assertEqual(set(builtin.values()), {"disable"})
        found = set(self.registered_globals())
        self.assertEqual(set(builtin) & found, {"os"})  # of which lua/os.lua has what is left
        self.assertLessEqual({"io", "debug", "package"} - found, set(builtin))


if __name__ == "__main__":
    unittest.main()
