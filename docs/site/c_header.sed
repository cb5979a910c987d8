# Doxygen's input filter for the C header, whose comments list arguments as aligned lines, "///   name  what it is":
# makes them Doxygen's own, and a paragraph of what follows them.
:names
s#^(///   [a-z_,]+), ([a-z])#\1,\2#
t names
s#^///   ([a-z_,]+)  +#/// @param \1 #
s#^/// (Errors:|Any thread)#/// @note \1#
