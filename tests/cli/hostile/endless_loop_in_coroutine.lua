-- Does not end, out of the main thread's sight.
coroutine.wrap(function() while true do end end)()
