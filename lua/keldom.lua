---@meta

-- keldom.lua: the types of the module `keldom`, for editors. It is never run. The manual's reference is made from it by
-- `tools/reference`, and the tests hold it against what is registered.

---A document-object model over the running application: a script asks for an object by its qualified name and gets a
---handle, walks from it to children and parents, and reads and changes the object.
---
---**Names.** A screen or a layer has its own name, and a layer instance that of its screen, a dot and that of its
---layer: `home.alerts`. A control, table or group has its container's qualified name, a dot and its own name:
---`climate.room.alerts`. Cells are called after their table's container and their template: the cells `comfort` of
---table `week.plan` are all `week.comfort`, and their variables are reached by `table_object:cell_key`. The
---application's name is the empty string. Names have letters, digits, `_` and dots.
---
---**Handles.** A handle holds a name and a type code, and finds the object anew at each use. Once the object is
---deleted, reads give nil and walks fail with a warning. Two handles of one object are equal; `tostring` of a handle
---is its name.
---
---**Variables.** Each property is a data variable of the object, such as `climate.room.alerts.kld_x`. The host
---converts what is written to the variable's type. This project's host makes booleans 0 or 1, cuts numbers to the
---range of the type (`Value 40000 for KEY (i16) is out of range, 32767 is written`), refuses what cannot be converted
---(`Cannot write table to KEY (i16)`), and makes a variable that an object does not have yet. A call is one batch:
---who listens to variables is told after its last write.
---
---**Failures.** Misuse of a function is either a warning in the host's log, after which it returns nothing and has
---changed nothing, or a Lua error; each function says which. Beyond these, all raise `Invalid argument, no
---application pointer` in a Lua state that no application owns, except that `keldom.get_application`,
---`keldom.get_screens` and `keldom.get_layers` log `Invalid call, no application pointer`; those that read or write
---variables raise `Invalid argument, cannot access data manager` on a host that has none; and those that give handles
---log `Object has no qualified name` when the host's model lists an object nowhere.
---@class keldom
keldom = {}

---The type code of a control, a cell too, as `keldom_object:get_type` gives it.
keldom.CONTROL = 0

---The type code of a table, as `keldom_object:get_type` gives it.
keldom.TABLE = 1

---The type code of a template of a table's cells, as `keldom_object:get_type` gives it.
keldom.TEMPLATE = 2

---The type code of a group, as `keldom_object:get_type` gives it.
keldom.GROUP = 3

---The type code of a layer, as `keldom_object:get_type` gives it.
keldom.LAYER = 4

---The type code of a layer instance, as `keldom_object:get_type` gives it.
keldom.LAYER_INSTANCE = 5

---The type code of a screen, as `keldom_object:get_type` gives it.
keldom.SCREEN = 6

---The type code of the application, as `keldom_object:get_type` gives it.
keldom.APP = 7

---The application's handle. Its name is empty, its children are the screens, and its variables are those that belong
---to no object.
---
---```lua
---local application = keldom.get_application()
---print(application:get_type() == keldom.APP, application:get_value("mode")) --> true  heat
---```
---@return keldom_object application
function keldom.get_application() end

---The handle of an object of any kind, or nil. The typed functions, such as `keldom.get_control`, do the same and
---tell an editor which methods the handle has.
---
---- Error `This function should have exactly one argument`: there are more or fewer.
---- Warning `Argument must be a string`: name is none, or has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local plan = keldom.get_object("week.plan")
---print(plan, plan:get_type() == keldom.TABLE) --> week.plan  true
---```
---@param name string qualified name
---@return keldom_object? handle
function keldom.get_object(name) end

---All layers, each once, whether a screen shows them or not, in the order in which the host lists them. This
---project's host takes the application file's.
---
---```lua
---local layers = keldom.get_layers()
---print(#layers, layers[1], layers[#layers]) --> 8  status_bar  preferences
---```
---@return layer_object[] layers
function keldom.get_layers() end

---All screens, in the order in which the host lists them. This project's host takes the application file's.
---
---```lua
---for _, screen in ipairs(keldom.get_screens()) do print(screen, #screen:get_children()) end
-----> home  6
-----> schedule  4
-----> settings  4
---```
---@return screen_object[] screens
function keldom.get_screens() end

---The handle of a control by name, or nil. A handle is given back as it is, so that a function can take either. The
---object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---print(warmer, warmer:get_size()) --> climate.target.warmer  48  48
---```
---@param name string qualified name
---@return control_object? handle
---@overload fun(handle: control_object): control_object
function keldom.get_control(name) end

---The handle of a table by name, or nil. A handle is given back as it is, so that a function can take either. The
---object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local plan = keldom.get_table("week.plan")
---print(plan:get_rows(), plan:get_cols()) --> 7  5
---```
---@param name string qualified name
---@return table_object? handle
---@overload fun(handle: table_object): table_object
function keldom.get_table(name) end

---The handle of a group by name, or nil. A handle is given back as it is, so that a function can take either. The
---object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local room = keldom.get_group("climate.room")
---print(room:get_x(), room:get_y()) --> 16  44
---```
---@param name string qualified name
---@return group_object? handle
---@overload fun(handle: group_object): group_object
function keldom.get_group(name) end

---The handle of a layer instance by name, or nil. A handle is given back as it is, so that a function can take
---either. The object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local notice = keldom.get_layer_instance("home.lock_notice")
---print(notice:get_alpha(), notice:get_hidden()) --> 240  true
---```
---@param name string qualified name
---@return layer_instance_object? handle
---@overload fun(handle: layer_instance_object): layer_instance_object
function keldom.get_layer_instance(name) end

---The handle of a layer by name, or nil. A handle is given back as it is, so that a function can take either. The
---object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local climate = keldom.get_layer("climate")
---print(climate:get_value("target.value.text")) --> 21.0
---```
---@param name string qualified name
---@return layer_object? handle
---@overload fun(handle: layer_object): layer_object
function keldom.get_layer(name) end

---The handle of a screen by name, or nil. A handle is given back as it is, so that a function can take either. The
---object's kind is not checked: that of another kind is given too, with the methods of its own kind.
---
---- Error `This function should have exactly one argument`: there are more behind a name.
---- Warning `Argument must be a keldom_object`: the argument is neither a name nor a handle.
---- Warning `Argument must be a string`: the name has a character that names do not have.
---- Warning `No such object in DOM`: there is no object of that name.
---
---```lua
---local home = keldom.get_screen("home")
---print(rawequal(keldom.get_screen(home), home)) --> true
---```
---@param name string qualified name
---@return screen_object? handle
---@overload fun(handle: screen_object): screen_object
function keldom.get_screen(name) end

---What every handle can do. Templates and the application have these methods alone.
---@class keldom_object
local keldom_object = {}

---The qualified name, as it was when the handle was made; the application's is empty.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_name()) --> climate.target.warmer
---```
---@return string name
function keldom_object:get_name() end

---The type code: one of `keldom.CONTROL` to `keldom.APP`.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_object("climate.mode"):get_type() == keldom.GROUP) --> true
---```
---@return integer type 0 to 7
function keldom_object:get_type() end

---What holds the object, in an array: of a control, table or group, the layer, group or table; of a layer, the
---screens that show it; of a layer instance, its screen; of a screen, the application; of the application, none.
---Called with a dot, it takes a name too.
---
---- Error `This function should have exactly one argument`: there are more.
---- Warning `Argument must be a valid fully qualified name`: self is a string that is no name. The next warning
---  follows.
---- Warning `Argument must be a string or keldom_object`: self is neither. The next warning follows.
---- Warning `No such object in DOM`: the object is deleted, or there is none of that name.
---
---```lua
---local alerts = keldom.get_control("climate.room.alerts")
---print(alerts:get_parents()[1]) --> climate.room
---print(#alerts.get_parents("status_bar")) --> 3
---```
---@return keldom_object[]? parents
---@overload fun(name: string): keldom_object[]?
function keldom_object:get_parents() end

---What the object holds, in an array and in the host's order: of a layer, a layer instance or a group, its controls,
---tables and groups; of a table, its cells, row by row; of a screen, its layer instances; of the application, the
---screens; of a control or template, none. Called with a dot, it takes a name too.
---
---- Error `This function should have exactly one argument`: there are more.
---- Warning `Argument must be a valid fully qualified name`: self is a string that is no name. The next warning
---  follows.
---- Warning `Argument must be a string or keldom_object`: self is neither. The next warning follows.
---- Warning `No such object in DOM`: the object is deleted, or there is none of that name.
---
---```lua
---for _, child in ipairs(keldom.get_layer("nav_bar"):get_children()) do print(child) end
-----> nav_bar.home
-----> nav_bar.schedule
-----> nav_bar.settings
---```
---@return keldom_object[]? children
---@overload fun(name: string): keldom_object[]?
function keldom_object:get_children() end

---The keys of the object's own variables, with the object's name in front and in no particular order. Of the
---application, those that belong to no object. Called with a dot, it takes a name too.
---
---- Error `This function should have exactly one argument`: there are more.
---- Warning `Argument must be a valid fully qualified name`: self is a string that is no name. The next warning
---  follows.
---- Warning `Argument must be a string or keldom_object`: self is neither. The next warning follows.
---- Warning `No such object in DOM`: the object is deleted, or there is none of that name.
---- Warning `DOM Object has no qualified name`: the host's model lists the object nowhere.
---
---```lua
---local keys = keldom.get_layer("climate"):get_variables()
---table.sort(keys)
---print(unpack(keys)) --> climate.kld_height  climate.kld_width
---```
---@return string[]? keys such as `climate.kld_width`
---@overload fun(name: string): string[]?
function keldom_object:get_variables() end

---The values of variables, one a key and in that order; nil for a variable that does not exist and for a key that is
---neither string nor number.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects at least 2 arguments (self, key, ...)`: there is no key.
---
---```lua
---local target = keldom.get_group("climate.target")
---print(target:get_value("value.text", "kld_x", "nosuch")) --> 21.0  228  nil
---```
---@param key string variable of the object, or of one below it: `text`, `value.text`
---@param ... string more keys
---@return kel.value? value
---@return kel.value? ... those of the further keys
function keldom_object:get_value(key, ...) end

---Writes variables, in the order given and as one batch. A key that is neither string nor number is passed over with
---its value, and so is a last key without a value.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects at least 3 arguments (self, k, v, ...)`: there is no pair.
---
---```lua
---local badge = keldom.get_control("climate.room.alerts")
---badge:set_value("text", "5 new", "kld_width", 64)
---print(badge:get_value("text", "kld_width")) --> 5 new  64
---```
---@param key string variable of the object, or of one below it: `text`, `value.text`
---@param value kel.input
---@param ... kel.input more pairs of key and value
function keldom_object:set_value(key, value, ...) end

---The values of variables as a table from key to value. A variable that does not exist is not in it.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects at least 2 arguments (self, key, ...)`: there is no key.
---- Error `table index is nil`: a key is nil.
---
---```lua
---local data = keldom.get_application():get_data("mode", "humidity", "nosuch")
---print(data.mode, data.humidity, data.nosuch) --> heat  46  nil
---```
---@param key string variable of the object, or of one below it: `text`, `value.text`
---@param ... string more keys
---@return table<string, kel.value> data
function keldom_object:get_data(key, ...) end

---Writes all pairs of a table, as one batch and in no particular order. Keys must be strings; others are passed over,
---but a number as key breaks the walk through the table. Of several arguments the last is taken.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Error `Argument must be a table`: the last argument is none.
---
---```lua
---local layer = keldom.get_layer("climate")
---layer:set_data({ ["room.caption.note"] = "north", ["target.value.text"] = "19.5" })
---print(layer:get_value("room.caption.note", "target.value.text")) --> north  19.5
---```
---@param data table<string, kel.input> from variable to value
function keldom_object:set_data(data) end

---The key of a variable: the qualified name, a dot and the variable; for the application, the variable alone. It asks
---nobody whether there is such a variable. Gives nothing, and logs nothing, when self is no handle.
---
---- Warning `Argument 2 must be a string`: variable is neither string nor number.
---
---```lua
---local key = keldom.get_control("climate.target.value"):key("text")
---print(key, kel.get_value(key)) --> climate.target.value.text  21.0
---```
---@param variable string
---@return string key
function keldom_object:key(variable) end

---What handles of controls can do, those of cells too.
---@class control_object: keldom_object
local control_object = {}

---Whether the object is hidden; false when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_hidden()) --> false
---```
---@return boolean hidden
function control_object:get_hidden() end

---The left edge, in pixels from the container's left edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_x()) --> 172
---```
---@return integer? x
function control_object:get_x() end

---The upper edge, in pixels from the container's upper edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_y()) --> 40
---```
---@return integer? y
function control_object:get_y() end

---The width in pixels; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_width()) --> 48
---```
---@return integer? width
function control_object:get_width() end

---The height in pixels; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_height()) --> 48
---```
---@return integer? height
function control_object:get_height() end

---The left and the upper edge, in pixels from the container's; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_position()) --> 172  40
---```
---@return integer? x
---@return integer? y
function control_object:get_position() end

---The width and the height in pixels; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_size()) --> 48  48
---```
---@return integer? width
---@return integer? height
function control_object:get_size() end

---The left and the upper edge in pixels from the container's, and the width and the height, not the right and the
---lower edge; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_control("climate.target.warmer"):get_bounds()) --> 172  40  48  48
---```
---@return integer? x
---@return integer? y
---@return integer? width
---@return integer? height
function control_object:get_bounds() end

---Hides the object, or shows it again.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, hidden)`: there are fewer.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_hidden(true)
---print(warmer:get_hidden()) --> true
---```
---@param hidden boolean
function control_object:set_hidden(hidden) end

---Moves the object horizontally: its anchor point, the left edge when none is named, comes to stand at x. What is
---written is the left edge; with an anchor other than kel.LEFT it wraps at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, x)`: there are fewer.
---- Error `Argument 3 must be kel.LEFT, kel.CENTER or kel.RIGHT`: the anchor is another number.
---- Error `Argument 3 must be an integer`: the anchor is no number.
---- Error `Argument 2 must be an integer`: x is no number, and the anchor is not kel.LEFT.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_x(200, kel.CENTER)
---print(warmer:get_x()) --> 176
---```
---@param x integer in pixels, -32768 to 32767 from the container's left edge
---@param anchor? kel.horizontal the point of the object that x means; nil means kel.LEFT
function control_object:set_x(x, anchor) end

---Moves the object vertically: its anchor point, the upper edge when none is named, comes to stand at y. What is
---written is the upper edge; with an anchor other than kel.TOP it wraps at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, y)`: there are fewer.
---- Error `Argument 3 must be kel.TOP, kel.CENTER or kel.BOTTOM`: the anchor is another number.
---- Error `Argument 3 must be an integer`: the anchor is no number.
---- Error `Argument 2 must be an integer`: y is no number, and the anchor is not kel.TOP.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_y(64, kel.CENTER)
---print(warmer:get_y()) --> 40
---```
---@param y integer in pixels, -32768 to 32767 from the container's upper edge
---@param anchor? kel.vertical the point of the object that y means; nil means kel.TOP
function control_object:set_y(y, anchor) end

---Sets the width; the anchor point, the left edge when none is named, stays where it is. With another anchor the left
---edge moves, in the same batch and wrapping at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, width)`: there are fewer.
---- Error `Argument 3 must be kel.LEFT, kel.CENTER or kel.RIGHT`: the anchor is another number.
---- Error `Argument 3 must be an integer`: the anchor is no number.
---- Error `Argument 2 must be an integer`: width is no number, and the anchor is not kel.LEFT.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_width(60, kel.RIGHT)
---print(warmer:get_bounds()) --> 160  40  60  48
---```
---@param width integer in pixels, 0 to 32767
---@param anchor? kel.horizontal the point of the object that stays; nil means kel.LEFT
function control_object:set_width(width, anchor) end

---Sets the height; the anchor point, the upper edge when none is named, stays where it is. With another anchor the
---upper edge moves, in the same batch and wrapping at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, height)`: there are fewer.
---- Error `Argument 3 must be kel.TOP, kel.CENTER or kel.BOTTOM`: the anchor is another number.
---- Error `Argument 3 must be an integer`: the anchor is no number.
---- Error `Argument 2 must be an integer`: height is no number, and the anchor is not kel.TOP.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_height(60, kel.CENTER)
---print(warmer:get_bounds()) --> 172  34  48  60
---```
---@param height integer in pixels, 0 to 32767
---@param anchor? kel.vertical the point of the object that stays; nil means kel.TOP
function control_object:set_height(height, anchor) end

---Moves the object: its anchor point, the upper left corner when none is named, comes to stand at x, y. With anchors
---other than kel.LEFT and kel.TOP what is written wraps at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 3 arguments (self, x, y)`: there are fewer.
---- Error `Argument 4 must be kel.LEFT, kel.CENTER or kel.RIGHT`: the horizontal anchor is another number.
---- Error `Argument 5 must be kel.TOP, kel.CENTER or kel.BOTTOM`: the vertical anchor is another number.
---- Error `Argument 4 must be an integer`: the horizontal anchor is no number.
---- Error `Argument 5 must be an integer`: the vertical anchor is no number.
---- Error `Argument 2 must be an integer`: x is no number, and its anchor is not kel.LEFT.
---- Error `Argument 3 must be an integer`: y is no number, and its anchor is not kel.TOP.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_position(220, 88, kel.RIGHT, kel.BOTTOM)
---print(warmer:get_position()) --> 172  40
---```
---@param x integer in pixels, -32768 to 32767 from the container's left edge
---@param y integer in pixels, -32768 to 32767 from the container's upper edge
---@param x_anchor? kel.horizontal the point that x means; nil means kel.LEFT
---@param y_anchor? kel.vertical the point that y means; nil means kel.TOP
function control_object:set_position(x, y, x_anchor, y_anchor) end

---Sets the width and the height; the anchor point, the upper left corner when none is named, stays where it is. With
---other anchors the left and the upper edge move, in the same batch and wrapping at 16 bits.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects at least 3 arguments (self, width, height)`: there are fewer.
---- Error `Argument 4 must be kel.LEFT, kel.CENTER or kel.RIGHT`: the horizontal anchor is another number.
---- Error `Argument 5 must be kel.TOP, kel.CENTER or kel.BOTTOM`: the vertical anchor is another number.
---- Error `Argument 4 must be an integer`: the horizontal anchor is no number.
---- Error `Argument 5 must be an integer`: the vertical anchor is no number.
---- Error `Argument 2 must be an integer`: width is no number, and its anchor is not kel.LEFT.
---- Error `Argument 3 must be an integer`: height is no number, and its anchor is not kel.TOP.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_size(60, 50, kel.CENTER, kel.BOTTOM)
---print(warmer:get_bounds()) --> 166  38  60  50
---```
---@param width integer in pixels, 0 to 32767
---@param height integer in pixels, 0 to 32767
---@param x_anchor? kel.horizontal the point that stays horizontally; nil means kel.LEFT
---@param y_anchor? kel.vertical the point that stays vertically; nil means kel.TOP
function control_object:set_size(width, height, x_anchor, y_anchor) end

---Sets the place of the upper left corner, and the size, as one batch.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 5 arguments (self, x, y, width, height)`: there are fewer.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:set_bounds(8, 20, 64, 32)
---print(warmer:get_bounds()) --> 8  20  64  32
---```
---@param x integer in pixels, -32768 to 32767 from the container's left edge
---@param y integer in pixels, -32768 to 32767 from the container's upper edge
---@param width integer in pixels, 0 to 32767
---@param height integer in pixels, 0 to 32767
function control_object:set_bounds(x, y, width, height) end

---Hides the object. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:hide()
---print(warmer:get_hidden()) --> true
---```
function control_object:hide() end

---Shows the object again. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local warmer = keldom.get_control("climate.target.warmer")
---warmer:hide()
---warmer:show()
---print(warmer:get_hidden()) --> false
---```
function control_object:show() end

---Copies the object, with all that it contains and all variables, to a new place; nil when the host refuses. The
---clone of a table is a table.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 3 or 4 arguments (self, name, parent_name, data(optional))`: there are more or
---  fewer.
---- Warning `Cannot clone...`: the host refuses and says why: the name is taken or no name, the parent is none, an
---  argument is of the wrong type.
---- Warning `No such object in DOM`: the host made the copy, but does not find it.
---
---```lua
---local cool = keldom.get_control("climate.mode.cool")
---local dry = cool:clone("dry", "climate.mode", { kld_y = 60 })
---print(dry, dry:get_bounds()) --> climate.mode.dry  61  60  57  44
---```
---@param name string own name of the copy: letters, digits and `_`
---@param parent_name string qualified name of the layer or group that is to hold it
---@param data? table<string, kel.input> from variable to the value that the copy is to have
---@return control_object? clone
function control_object:clone(name, parent_name, data) end

---Removes the object from the application, with all that it contains and their variables. The handle stays as it is.
---Give no argument: the object that it names would be removed instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `Cannot delete...`: the host refuses and says why.
---
---```lua
---local holiday = keldom.get_control("week.heading.holiday")
---holiday:delete()
---print(holiday, holiday:get_x()) --> week.heading.holiday  nil
---```
function control_object:delete() end

---What handles of tables can do: all that those of controls can, and this.
---@class table_object: control_object
local table_object = {}

---The number of rows; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_table("week.plan"):get_rows()) --> 7
---```
---@return integer? rows
function table_object:get_rows() end

---The number of columns; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_table("week.plan"):get_cols()) --> 5
---```
---@return integer? cols
function table_object:get_cols() end

---Sets the number of rows. The host makes or removes cells; the table's size in pixels stays. This project's host
---gives new cells the templates of the last row, and sets a size that it refuses back, with the warning `Cannot
---resize week.plan to ...`.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, rows)`: there are fewer.
---
---```lua
---local plan = keldom.get_table("week.plan")
---plan:set_rows(8)
---print(plan:get_rows(), #plan:get_children()) --> 8  40
---```
---@param rows integer 0 to 65535; 65536 cells at most
function table_object:set_rows(rows) end

---Sets the number of columns. The host makes or removes cells; the table's size in pixels stays. This project's host
---gives new cells the templates of the last column, and sets a size that it refuses back, with the warning `Cannot
---resize week.plan to ...`.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, cols)`: there are fewer.
---
---```lua
---local plan = keldom.get_table("week.plan")
---plan:set_cols(4)
---print(plan:get_cols(), #plan:get_children()) --> 4  28
---```
---@param cols integer 0 to 65535; 65536 cells at most
function table_object:set_cols(cols) end

---The key of a cell's variable: the table's qualified name, the variable, row and column, joined by dots. It asks
---nobody whether there is such a cell.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `Argument 2 must be a number`: row is none.
---- Warning `Argument 3 must be a number`: col is none.
---- Warning `Argument 3 must be a string`: variable, the fourth argument, is neither string nor number.
---
---```lua
---local key = keldom.get_table("week.plan"):cell_key(0, 1, "celsius")
---print(key, kel.get_value(key)) --> week.plan.celsius.0.1  21
---```
---@param row integer counted from 0
---@param col integer counted from 0
---@param variable string
---@return string key
function table_object:cell_key(row, col, variable) end

---What handles of groups can do. A group has a place and no size.
---@class group_object: keldom_object
local group_object = {}

---Whether the object is hidden; false when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_group("climate.room"):get_hidden()) --> false
---```
---@return boolean hidden
function group_object:get_hidden() end

---The left edge, in pixels from the container's left edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_group("climate.room"):get_x()) --> 16
---```
---@return integer? x
function group_object:get_x() end

---The upper edge, in pixels from the container's upper edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_group("climate.room"):get_y()) --> 44
---```
---@return integer? y
function group_object:get_y() end

---Hides the object, or shows it again.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, hidden)`: there are fewer.
---
---```lua
---local room = keldom.get_group("climate.room")
---room:set_hidden(true)
---print(room:get_hidden()) --> true
---```
---@param hidden boolean
function group_object:set_hidden(hidden) end

---Moves the left edge. There are no anchors: of a group a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, x)`: there are fewer.
---
---```lua
---local room = keldom.get_group("climate.room")
---room:set_x(20)
---print(room:get_x()) --> 20
---```
---@param x integer in pixels, -32768 to 32767 from the container's left edge
function group_object:set_x(x) end

---Moves the upper edge. There are no anchors: of a group a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, y)`: there are fewer.
---
---```lua
---local room = keldom.get_group("climate.room")
---room:set_y(20)
---print(room:get_y()) --> 20
---```
---@param y integer in pixels, -32768 to 32767 from the container's upper edge
function group_object:set_y(y) end

---Hides the object. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local room = keldom.get_group("climate.room")
---room:hide()
---print(room:get_hidden()) --> true
---```
function group_object:hide() end

---Shows the object again. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local room = keldom.get_group("climate.room")
---room:hide()
---room:show()
---print(room:get_hidden()) --> false
---```
function group_object:show() end

---Copies the object, with all that it contains and all variables, to a new place; nil when the host refuses.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 3 or 4 arguments (self, name, parent_name, data(optional))`: there are more or
---  fewer.
---- Warning `Cannot clone...`: the host refuses and says why: the name is taken or no name, the parent is none, an
---  argument is of the wrong type.
---- Warning `No such object in DOM`: the host made the copy, but does not find it.
---
---```lua
---local sample = keldom.get_group("alerts.sample")
---local row = sample:clone("frost", "alerts", { ["label.text"] = "Frost", kld_hidden = false })
---print(row, row:get_value("label.text"), sample:get_hidden()) --> alerts.frost  Frost  true
---```
---@param name string own name of the copy: letters, digits and `_`
---@param parent_name string qualified name of the layer or group that is to hold it
---@param data? table<string, kel.input> from variable to the value that the copy is to have
---@return group_object? clone
function group_object:clone(name, parent_name, data) end

---Removes the object from the application, with all that it contains and their variables. The handle stays as it is.
---Give no argument: the object that it names would be removed instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `Cannot delete...`: the host refuses and says why.
---
---```lua
---local outdoor = keldom.get_group("status_bar.outdoor")
---outdoor:delete()
---print(#keldom.get_layer("status_bar"):get_children()) --> 3
---```
function group_object:delete() end

---What handles of layer instances can do. An instance shows a layer at a place of one screen; what it contains is the
---layer's, on every screen.
---@class layer_instance_object: keldom_object
local layer_instance_object = {}

---The layer that the instance shows.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Error `No such object in DOM`: self is the handle of an object that is deleted.
---- Error `Object is not a layer instance`: self is the handle of another kind.
---
---```lua
---print(keldom.get_layer_instance("schedule.nav_bar"):get_layer()) --> nav_bar
---```
---@return layer_object layer
function layer_instance_object:get_layer() end

---Whether the object is hidden; false when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_hidden()) --> false
---```
---@return boolean hidden
function layer_instance_object:get_hidden() end

---The left edge, in pixels from the screen's left edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_x()) --> 0
---```
---@return integer? x
function layer_instance_object:get_x() end

---The upper edge, in pixels from the screen's upper edge; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_y()) --> 224
---```
---@return integer? y
function layer_instance_object:get_y() end

---The width in pixels; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_width()) --> 480
---```
---@return integer? width
function layer_instance_object:get_width() end

---The height in pixels; nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_height()) --> 48
---```
---@return integer? height
function layer_instance_object:get_height() end

---How opaque the instance is: 0 (not seen) to 255 (opaque); nil when there is no such variable.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.lock_notice"):get_alpha()) --> 240
---```
---@return integer? alpha
function layer_instance_object:get_alpha() end

---The left and the upper edge, in pixels from the screen's; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_position()) --> 0  224
---```
---@return integer? x
---@return integer? y
function layer_instance_object:get_position() end

---The width and the height in pixels; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_size()) --> 480  48
---```
---@return integer? width
---@return integer? height
function layer_instance_object:get_size() end

---The left and the upper edge in pixels from the screen's, and the width and the height, not the right and the lower
---edge; nil in the place of a variable that does not exist.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---print(keldom.get_layer_instance("home.nav_bar"):get_bounds()) --> 0  224  480  48
---```
---@return integer? x
---@return integer? y
---@return integer? width
---@return integer? height
function layer_instance_object:get_bounds() end

---Hides the object, or shows it again.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, hidden)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_hidden(true)
---print(bar:get_hidden()) --> true
---```
---@param hidden boolean
function layer_instance_object:set_hidden(hidden) end

---Moves the left edge. There are no anchors: of a layer instance a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, x)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_x(20)
---print(bar:get_x()) --> 20
---```
---@param x integer in pixels, -32768 to 32767 from the screen's left edge
function layer_instance_object:set_x(x) end

---Moves the upper edge. There are no anchors: of a layer instance a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, y)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_y(20)
---print(bar:get_y()) --> 20
---```
---@param y integer in pixels, -32768 to 32767 from the screen's upper edge
function layer_instance_object:set_y(y) end

---Sets the width; the left edge stays. There are no anchors: of a layer instance a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, width)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_width(40)
---print(bar:get_width()) --> 40
---```
---@param width integer in pixels, 0 to 32767
function layer_instance_object:set_width(width) end

---Sets the height; the upper edge stays. There are no anchors: of a layer instance a further argument is ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, height)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_height(40)
---print(bar:get_height()) --> 40
---```
---@param height integer in pixels, 0 to 32767
function layer_instance_object:set_height(height) end

---Sets how opaque the instance is.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 2 arguments (self, alpha)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_alpha(96)
---print(bar:get_alpha()) --> 96
---```
---@param alpha integer 0 (not seen) to 255 (opaque)
function layer_instance_object:set_alpha(alpha) end

---Moves the upper left corner. There are no anchors: of a layer instance further arguments are ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 3 arguments (self, x, y)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_position(8, 200)
---print(bar:get_position()) --> 8  200
---```
---@param x integer in pixels, -32768 to 32767 from the screen's left edge
---@param y integer in pixels, -32768 to 32767 from the screen's upper edge
function layer_instance_object:set_position(x, y) end

---Sets the width and the height; the upper left corner stays. There are no anchors: of a layer instance further
---arguments are ignored.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects at least 3 arguments (self, width, height)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_size(400, 40)
---print(bar:get_size()) --> 400  40
---```
---@param width integer in pixels, 0 to 32767
---@param height integer in pixels, 0 to 32767
function layer_instance_object:set_size(width, height) end

---Sets the place of the upper left corner, and the size, as one batch.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---- Warning `This function expects 5 arguments (self, x, y, width, height)`: there are fewer.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:set_bounds(8, 20, 64, 32)
---print(bar:get_bounds()) --> 8  20  64  32
---```
---@param x integer in pixels, -32768 to 32767 from the screen's left edge
---@param y integer in pixels, -32768 to 32767 from the screen's upper edge
---@param width integer in pixels, 0 to 32767
---@param height integer in pixels, 0 to 32767
function layer_instance_object:set_bounds(x, y, width, height) end

---Hides the object. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:hide()
---print(bar:get_hidden()) --> true
---```
function layer_instance_object:hide() end

---Shows the object again. Give no argument: it would be written instead.
---
---- Warning `Argument must be a keldom_object`: self is no handle.
---
---```lua
---local bar = keldom.get_layer_instance("home.nav_bar")
---bar:hide()
---bar:show()
---print(bar:get_hidden()) --> false
---```
function layer_instance_object:show() end

---What handles of layers can do: what every handle can.
---@class layer_object: keldom_object
local layer_object = {}

---What handles of screens can do: what every handle can.
---@class screen_object: keldom_object
local screen_object = {}
