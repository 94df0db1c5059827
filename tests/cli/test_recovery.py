# test_recovery.py: what a script's failure in the midst of the plug-in's work leaves behind: nothing.

import unittest

import kel_tool

MAIN = """
function on_change(event) print("changed " .. event.target) end
"""
HANDLERS = [{"event": "kel.changed", "target": "main.ok.kld_x", "function": "on_change"}]


class Recovery(kel_tool.ToolTest):
    def test_changes_are_told_after_a_batch_that_failed(self):
        app = self.write_app({"main.lua": MAIN}, handlers=HANDLERS)
        failing = "keldom.get_object('main.ok'):set_data({[1] = 1, [2] = 2})"
        result = self.kel("run", app, "--exec", failing, "--exec", "keldom.get_object('main.ok'):set_x(7)")
        self.assertEqual((result.status, result.out), (kel_tool.FAILED, "changed main.ok.kld_x\n"))
        self.assertIn("error: invalid key to 'next'\n", result.err)
        self.assertIn("warning: Script left 1 change hold(s) open, released\n", result.err)

    def test_a_deleted_object_leaves_a_handle_that_does_no_harm(self):
        app = self.write_app()
        code = """
            local ok = keldom.get_object("main.ok")
            ok:delete()
            collectgarbage()
            print(ok, ok:get_x(), ok:get_children(), ok:key("kld_x"))
            ok:set_x(1)
        """
        result = self.kel("run", app, "--exec", code)
        self.assertResult(result, kel_tool.SUCCEEDED, "main.ok\tnil\tnil\tmain.ok.kld_x\n",
                          "warning: No such object in DOM\n"
                          'warning: Cannot create main.ok.kld_x: no object "main.ok"\n')


if __name__ == "__main__":
    unittest.main()
