// A shared library that is not a provider module: it has no
// PegasusCreateProvider, so loading it as one must fail cleanly.
extern "C" int qelServerTestNotAProvider()
{
    return 0;
}
