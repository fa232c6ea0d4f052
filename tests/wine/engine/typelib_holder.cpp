// A library that holds a type library and nothing else: no registration
// entries, as many libraries of type information are built.
