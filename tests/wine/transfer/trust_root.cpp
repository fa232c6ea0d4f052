// corvan_trust_root <certificate.pem>: adds a certificate to the machine's
// trusted root store, so the HTTPS test server's authority is trusted the way
// a real installer server's is.
#include <cstdio>
#include <string>

#include <windows.h>
#include <wincrypt.h>

int main(int argc, char** argv) {
    const std::string path = argc == 2 ? argv[1] : "";
    const std::wstring widePath(path.begin(), path.end());
    const void* certificate = nullptr;
    if (!CryptQueryObject(CERT_QUERY_OBJECT_FILE, widePath.c_str(), CERT_QUERY_CONTENT_FLAG_CERT, CERT_QUERY_FORMAT_FLAG_ALL,
                          0, nullptr, nullptr, nullptr, nullptr, nullptr, &certificate)) {
        std::fprintf(stderr, "usage: corvan_trust_root <certificate.pem> (%s is none)\n", path.c_str());
        return 2;
    }
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
    const BOOL added = store && CertAddCertificateContextToStore(store, static_cast<PCCERT_CONTEXT>(certificate),
                                                                 CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    const DWORD error = GetLastError();
    if (store) CertCloseStore(store, 0);
    if (!added) std::fprintf(stderr, "cannot add the certificate to the root store: %lu\n", error);
    return added ? 0 : 1;
}
