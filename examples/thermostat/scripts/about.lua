-- about.lua: lists the application's own variables, for whoever answers the telephone.

about = {}

function about.report(event)
  format.press(event)
  local application = keldom.get_application()
  local keys = application:get_variables()
  table.sort(keys) -- they come in no particular order
  local values = application:get_data(unpack(keys))
  for _, key in ipairs(keys) do format.line(key, values[key]) end
end
