// corvan_trust_root <certificate file>: adds a certificate (PEM or DER) to
// the machine's trusted root store, so the HTTPS test server's authority is
// trusted the way a real installer server's is.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <windows.h>
#include <wincrypt.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: corvan_trust_root <certificate file>\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::vector<BYTE> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.empty()) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    std::vector<BYTE> der = bytes;
    DWORD derSize = static_cast<DWORD>(der.size());
    std::string text(bytes.begin(), bytes.end());
    if (text.find("-----BEGIN") != std::string::npos) {
        derSize = 0;
        if (!CryptStringToBinaryA(text.c_str(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64HEADER, nullptr,
                                  &derSize, nullptr, nullptr)) {
            std::fprintf(stderr, "not a certificate: %s\n", argv[1]);
            return 1;
        }
        der.resize(derSize);
        CryptStringToBinaryA(text.c_str(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64HEADER, der.data(),
                             &derSize, nullptr, nullptr);
    }
    HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
    if (!store) {
        std::fprintf(stderr, "cannot open the root store: %lu\n", GetLastError());
        return 1;
    }
    BOOL added = CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(), derSize,
                                                  CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    DWORD error = GetLastError();
    CertCloseStore(store, 0);
    if (!added) {
        std::fprintf(stderr, "cannot add the certificate: %lu\n", error);
        return 1;
    }
    return 0;
}
