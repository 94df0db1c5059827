-- Catches what ends it, and goes on.
while true do
  pcall(function() while true do end end)
end
