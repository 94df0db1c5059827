# Breaks values.cpp: something is allocated while changes are held, and where it fails they stay held.
s/->hold_change_listener(data_mgr);/&\n    void *room = kelal_strdup("");\n    if (!room) return 0;\n    kelal_free(room);/
