// corvan_trust_root <certificate.pem>: adds a certificate to the machine's
// trusted root store, so the HTTPS test server's authority is trusted the way
// a real installer server's is.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <windows.h>
#include <wincrypt.h>

int main(int argc, char** argv) {
    std::ostringstream pem;
    if (argc == 2) pem << std::ifstream(argv[1], std::ios::binary).rdbuf();
    const std::string text = pem.str();
    DWORD size = 0;
    if (!CryptStringToBinaryA(text.c_str(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64HEADER, nullptr, &size,
                              nullptr, nullptr)) {
        std::fprintf(stderr, "usage: corvan_trust_root <certificate.pem> (%s is none)\n", argc == 2 ? argv[1] : "");
        return 2;
    }
    std::vector<BYTE> der(size);
    CryptStringToBinaryA(text.c_str(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64HEADER, der.data(), &size,
                         nullptr, nullptr);
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
    const BOOL added = store && CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(), size,
                                                                 CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    const DWORD error = GetLastError();
    if (store) CertCloseStore(store, 0);
    if (!added) std::fprintf(stderr, "cannot add the certificate to the root store: %lu\n", error);
    return added ? 0 : 1;
}
