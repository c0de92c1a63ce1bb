// The shared library libzwinformes carries the whole module; this unit only
// gives it a version symbol of its own.
extern "C" const char* zwinformes_version()
{
    return "0.1.0";
}
