/*
 * qelapi.h - C interface of the array's management library (libqelapi).
 *
 * The provider module sees the storage array only through this header. The
 * library shipped in this tree is a simulated array (see docs/simulator.md); a
 * real array's library with the same interface replaces it without rebuilding
 * the module.
 *
 * Conventions
 *  - Calls returning int give 0 on success and an API_ERR_* code (or, where the
 *    call says so, another documented number) on failure. A null pointer or an
 *    out-of-range argument gives API_ERR_INVAL and changes nothing.
 *  - Reads hand out fresh malloc'd copies. Lists from api_getFCPorts and
 *    api_getFCALPorts are released with api_freeFCPorts; the record arrays of
 *    api_getISCSIPorts, api_getPortLESB and api_getVVs with free(). A failed
 *    read leaves its list zeroed (count 0, pointer null).
 *  - The port selector API_ALL_PORTS (-10 as unsigned 64-bit) means every port;
 *    any other value selects the port (or volume) with that WWN.
 *  - Record sizes and the offsets the module relies on are fixed; the static
 *    assertions at the end of this file pin them.
 */
#ifndef QELAPI_H
#define QELAPI_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /* ------------------------------------------------------------------ codes */

    enum
    {
        API_OK = 0,
        API_ERR_PERM = 1,   /* refused: user disabled, setting locked          */
        API_ERR_NOENT = 2,  /* no such port, user, volume or cage              */
        API_ERR_IO = 5,     /* the array state could not be read or saved      */
        API_ERR_NOMEM = 12, /* no memory for the copy handed out               */
        API_ERR_BUSY = 16,  /* the module-wide semaphore could not be taken    */
        API_ERR_INVAL = 22  /* null pointer, bad count or out-of-range value   */
    };

#define API_ALL_PORTS ((uint64_t)0xFFFFFFFFFFFFFFF6ULL) /* selector: every port */
#define API_LPID_UNKNOWN ((uint16_t)65532)              /* no port has that ID  */

    /* Results of api_authorizeCIMUser. */
    enum
    {
        API_AUTH_GRANTED = 0,
        API_AUTH_DENIED = 1,      /* the user's role does not grant the key     */
        API_AUTH_NOT_ALLOWED = 2, /* unknown or disabled user, address refused  */
        API_AUTH_UNKNOWN_KEY = 3  /* the array knows no such operation key      */
    };

    /* Levels of log_message. */
    enum
    {
        API_LOG_ERROR = 1,
        API_LOG_FAILURE = 2,
        API_LOG_NOTICE = 3,
        API_LOG_TRACE = 4
    };

    /* ------------------------------------------------------------- port state */

    typedef enum
    {
        PORT_CONFIG_WAIT = 0,
        PORT_ALPA_WAIT = 1,
        PORT_LOGIN_WAIT = 2,
        PORT_OK = 3,
        PORT_LOSS_SYNC = 4,
        PORT_ERROR = 5,
        PORT_XXX = 6,
        PORT_NONPARTICIPATE = 7,
        PORT_COREDUMP = 8,
        PORT_OFFLINE = 9,
        PORT_FWDEAD = 10,
        PORT_IDLE_FOR_RESET = 11,
        PORT_DHCP_IN_PROGRESS = 12,
        PORT_PENDING_RESET = 13,
        PORT_UNKNOWN = 99,
        PORT_STATUS_FORCE_32BIT = 0x7FFFFFFF /* keeps the enumeration 32 bits wide */
    } api_port_status_t;

    /* ------------------------------------------------------------ transceiver */

    /* DDM monitor types (api_ddm_t.monitorType). */
    enum
    {
        DDM_TEMPERATURE = 0,
        DDM_VOLTAGE = 1,
        DDM_TX_BIAS = 2,
        DDM_TX_POWER = 3,
        DDM_RX_POWER = 4
    };

#define API_SFP_PRESENT 0x01u       /* api_sfp_t.presentFlags bit 0      */
#define API_SFP_UNQUALIFIED 0x01u   /* api_sfp_t.qualityFlags bit 0      */
#define API_SFP_RX_POWER_LOW 0x02u  /* api_sfp_t.qualityFlags bit 1      */
#define API_SFP_DDM_AVAILABLE 0x01u /* api_sfp_t.ddmFlags bit 0          */

    /* One digital diagnostic monitoring entry of a transceiver (64 bytes). */
    typedef struct api_ddm
    {
        int32_t monitorType;  /* DDM_* */
        uint32_t sensorFlags; /* the array's own sensor flags                  */
        char unit[32];        /* unit as the array spells it, e.g. "C", "mW"   */
        int32_t value;        /* readings are raw 32-bit numbers               */
        int32_t lowAlarm;
        int32_t highAlarm;
        int32_t lowWarn;
        int32_t highWarn;
        uint32_t sampleCount; /* readings taken since the transceiver came up  */
    } api_ddm_t;

    /* Transceiver (SFP) record, embedded in FC and iSCSI port records (552 bytes). */
    typedef struct api_sfp
    {
        uint8_t presentFlags; /* API_SFP_PRESENT: installed, rest is valid     */
        char manufacturer[32];
        char partNumber[32];
        char serialNumber[32]; /* as the transceiver reports it, blanks kept    */
        char revision[32];
        char description[64]; /* the transceiver's kind, e.g. "8Gb Short Wave" */
        uint64_t speed;       /* as the array reports it                       */
        uint32_t disableTxPin;
        uint32_t lossRxPin;
        uint32_t faultTxPin;
        uint32_t qualityFlags; /* API_SFP_UNQUALIFIED, API_SFP_RX_POWER_LOW     */
        uint32_t state;        /* 1 good, 2 degraded, anything else failed      */
        uint32_t ddmFlags;     /* API_SFP_DDM_AVAILABLE                         */
        api_ddm_t ddm[5];
    } api_sfp_t;

    /* ---------------------------------------------------------------- FC port */

    /* FC port record; both the FC view and the loop view of the port (1248 bytes). */
    typedef struct api_FCPort
    {
        char position[32]; /* "node:slot:port" in decimal            */
        api_port_status_t portStatus;
        char wwnText[20];        /* port WWN, 16 upper-case hex digits     */
        uint64_t portWwn;        /* 0 and API_ALL_PORTS: not a port        */
        int32_t currentRate;     /* rate codes: 0 none, 1/2/4/8/10/16 Gb/s,
                                       11 10 Mb/s, 12 100 Mb/s, 15 1.5 Gb/s,
                                       30 3 Gb/s, 60 6 Gb/s, 3 automatic      */
        char fcSystemName[64];   /* node system name, FC view              */
        uint64_t fcNodeWwn;      /* node WWN, FC view                      */
        char fcalSystemName[64]; /* node system name, loop view            */
        uint64_t fcalNodeWwn;    /* node WWN, loop view                    */
        uint8_t fullDuplex;
        int32_t maxRate;
        int32_t configuredRate; /* 3: automatic                           */
        int32_t topology;
        int32_t portKind;
        int32_t configuration;
        int32_t mode; /* 1 target, 2 initiator, 3 peer          */
        int32_t connectionMode;
        uint8_t modeChangeAllowed;
        int32_t deviceTypeConnected;
        int32_t connectionType; /* 1 loop, 2 point to point, 3/4 fabric   */
        int32_t class2;
        int32_t vcn;
        int32_t interruptCoalescing;
        const char* connectedTo; /* may be null; lives as long as the list */
        api_sfp_t sfp;           /* filled only when asked for             */
        uint16_t portId;         /* the port's LPID                        */
        uint8_t reserved[414];
    } api_FCPort_t;

    /* ------------------------------------------------------------ iSCSI port */

    /* iSCSI port record: its iSCSI name first, then an embedded transceiver. */
    typedef struct api_iSCSIPort
    {
        char iscsiName[224]; /* at most 223 characters                 */
        char position[32];   /* "node:slot:port"                       */
        api_port_status_t portStatus;
        uint16_t portId; /* the port's LPID                        */
        char ipAddr[46]; /* the port's address as text             */
        api_sfp_t sfp;
    } api_iSCSIPort_t;

    /* ------------------------------------------------------------------- LESB */

    /* Link error status block counters of one FC port (192 bytes). */
    typedef struct api_portLESB
    {
        char portText[65];   /* the port's wwnText                     */
        uint64_t sampleTime; /* epoch seconds of the sample            */
        uint16_t portId;     /* the port's LPID; 0: none known         */
        uint64_t linkFailures;
        uint64_t lossOfSync;
        uint64_t lossOfSignal;
        uint64_t primitiveSeqErrors;
        uint64_t invalidTxWords;
        uint64_t crcErrors;
        uint8_t reserved[56];
    } api_portLESB_t;

    /* --------------------------------------------------------------- volumes */

    /* Volume kinds (api_VV_t.kind). */
    enum
    {
        VV_KIND_INVALID = 0,
        VV_KIND_BASE = 1,
        VV_KIND_PHYSICAL_COPY = 2,
        VV_KIND_VIRTUAL_COPY = 3,
        VV_KIND_OTHER = 4
    };

    typedef struct api_VV
    {
        char name[32];
        char wwnText[20]; /* volume WWN, 16 upper-case hex digits   */
        uint64_t wwn;
        int32_t kind; /* VV_KIND_*                              */
        uint32_t id;  /* the array's volume number              */
        uint64_t sizeMiB;
    } api_VV_t;

    /* ------------------------------------------------------- event and address */

    /* Event record attached to every change; the array writes it to its audit log. */
    typedef struct api_evtparam
    {
        int32_t cb_code;
        char user[32];
        char addr[46];
        char method[128]; /* "Class:Method"                         */
        char inst_op[16];
        char inst_param[256];
    } api_evtparam_t;
    typedef api_evtparam_t _api_evtparam_t;

    /* The system's management addresses (24 bytes). */
    typedef struct api_ipaddr
    {
        int32_t dual_flag;     /* > 2: ipv6_addr is present              */
        uint32_t ipv4_addr;    /* network byte order                     */
        uint8_t ipv6_addr[16]; /* network byte order                     */
    } api_ipaddr_t;

    /* Identity of the storage system (served by the server's internal cache). */
    typedef struct api_sysident
    {
        char systemName[64];
        char hostName[256];
        uint32_t systemID;
        int32_t systemType;
        uint8_t quadPort; /* non-zero: a quad-port system           */
        char ipv4[16];    /* dotted text                            */
        char ipv6[46];    /* empty when the system has none         */
    } api_sysident_t;

    /* ------------------------------------------------------------- list pairs */

    typedef struct
    {
        uint32_t count;
        api_FCPort_t* ports;
    } api_FCPortList_t;
    typedef struct
    {
        uint32_t count;
        api_iSCSIPort_t* ports;
    } api_iSCSIPortList_t;
    typedef struct
    {
        uint32_t count;
        api_portLESB_t* lesb;
    } api_portLESBList_t;
    typedef struct
    {
        uint32_t count;
        api_VV_t* vvs;
    } api_VVList_t;

    /* ------------------------------------------------------ sessions, locking */

    /* Opens the library session of a CIM user: 0, or API_ERR_NOENT (unknown user),
 * API_ERR_PERM (disabled user), API_ERR_INVAL (null). */
    int api_qelOpenForCimserver(const char* user);

    /* May user, calling from addr, perform the operation key (lower case,
 * e.g. "qel_fcport.setoffline")? API_AUTH_* (0 granted, 1/2 refused, 3 unknown key). */
    int api_authorizeCIMUser(const char* user, const char* addr, const char* key);

    /* Takes the module-wide semaphore (blocks): 0, or non-zero when it cannot be taken. */
    int cim_sem_wait(void);

    /* Gives the semaphore back: 0, or API_ERR_INVAL when it was not taken. */
    int cim_sem_post(void);

    /* Writes one trace line at level (API_LOG_*) if the array's threshold keeps it. */
    void log_message(int level, const char* fmt, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;

    /* Writes an unconditional console message (no event is raised). */
    void qel_print_no_evt(const char* fmt, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 1, 2)))
#endif
        ;

    /* Writes the message and stops the process (abort). */
    void qel_panic(const char* fmt, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 1, 2), noreturn))
#endif
        ;

    /* ------------------------------------------------------------------ reads */

    /* FC ports (filter: API_ALL_PORTS or a WWN). detail 0..3: 3 is the full record,
 * lower levels leave the port's settings (topology .. connectedTo) zero;
 * sfpFlag 1 fills the embedded SFP records, 0 leaves them zeroed.
 * An unknown WWN gives API_ERR_NOENT and an empty list. */
    int api_getFCPorts(uint64_t filter, int detail, int sfpFlag, api_FCPortList_t* list);

    /* The same ports in their loop view, settings and SFPs included. */
    int api_getFCALPorts(uint64_t filter, api_FCPortList_t* list);

    /* Releases a list of api_getFCPorts/api_getFCALPorts and zeroes it; a zeroed
 * list is fine. API_ERR_INVAL for null. */
    int api_freeFCPorts(api_FCPortList_t* list);

    /* Every iSCSI port with its SFP; release list->ports with free(). */
    int api_getISCSIPorts(api_iSCSIPortList_t* list);

    /* LESB records of one port (or of every port for API_ALL_PORTS), in port order;
 * a port may have several records or none. Release list->lesb with free(). */
    int api_getPortLESB(uint64_t wwn, api_portLESBList_t* list);

    /* Volumes (filter: API_ALL_PORTS for all, or a volume WWN). Release list->vvs with free(). */
    int api_getVVs(uint64_t filter, api_VVList_t* list);

    /* ----------------------------------------------------------- identifiers */

    /* LPID of the FC port whose WWN text (16 hex digits, either case) is deviceID;
 * API_LPID_UNKNOWN (65532) when there is none. */
    uint16_t api_findFCPortLPID(const char* deviceID);

    /* LPID of the FC port with that WWN into *lpid: 0 or API_ERR_NOENT/API_ERR_INVAL. */
    int api_getFCPortLPID(uint64_t wwn, uint16_t* lpid);

    /* LPID of the iSCSI port with that iSCSI name into *lpid. */
    int api_getiSCSIPortLPID(char* iscsiName, uint16_t* lpid);

    /* Converts an LPID's text form ("node:slot:port") into the LPID. */
    int api_convertStrLPIDtoPortID(const char* text, uint16_t* lpid);

    /* Names the port position of an LPID ("node:slot:port"); "-" for an invalid one.
 * The text stays valid until the calling thread's next loop_text call. */
    const char* loop_text(uint16_t lpid);

    /* The system's management addresses. */
    int api_getSystemDualIP(api_ipaddr_t* ip);

    /* Checks an IPv4 or IPv6 address text and writes its canonical form into out;
 * returns the family (AF_INET 2, AF_INET6 10), or -1 for a bad address. */
    int validateConvertIP(const char* text, char out[46]);

    /* Identity of the system (name, host name, ID, type, quad-port flag, addresses).
 * An addition of the simulated array for the server's internal cache service. */
    int api_getSystemIdentity(api_sysident_t* ident);

    /* --------------------------------------------------------------- changes */
    /* Each change takes the event record first, then count (>= 1) and the LPIDs of
 * the ports. All LPIDs are checked before anything changes; the change is
 * stored before the call returns and the event is written to the audit log. */

    /* Port mode (1..3); needs the port's modeChangeAllowed or force. */
    int api_setFCPortMode(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t mode, bool force);
    /* Connection type (1..4). */
    int api_setFCPortConnType(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t connType);
    /* Class 2 support (1 ack0, 2 ack1, 3 off). */
    int api_setFCPortClass2(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t class2);
    /* VCN (1 on, 2 off). */
    int api_setFCPortVCN(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t vcn);
    /* Interrupt coalescing (1 on, 2 off). */
    int api_setFCPortIntCoal(api_evtparam_t* evt, int count, uint16_t* ids, uint16_t intCoal);
    /* Requested speed in whole Gb/s (1, 2, 4, 8, 10, 16, at most the port's
 * maximum); 0 selects automatic. */
    int api_setFCPortSpeed(api_evtparam_t* evt, int count, uint16_t* ids, uint32_t gbps);

    /* Takes the ports offline (PORT_OFFLINE). */
    int api_setPortOffline(api_evtparam_t* evt, int count, uint16_t* ids);
    /* Resets the ports (back to PORT_OK). */
    int api_resetPort(api_evtparam_t* evt, int count, uint16_t* ids);
    /* Reloads the ports' firmware (back to PORT_OK). */
    int api_reloadPortFW(api_evtparam_t* evt, int count, uint16_t* ids);
    /* Synchronises the ports' name-server database (state unchanged). */
    int api_syncFCPortDB(api_evtparam_t* evt, int count, uint16_t* ids);
    /* Initialises the ports' loops (back to PORT_OK); cage null for every cage,
 * else a cage the array knows. */
    int api_initFCPortLoop(api_evtparam_t* evt, int count, uint16_t* ids, const char* cage);

    /* Zeroes the LESB counters of the port with that WWN and stamps a new sample time. */
    int api_resetPortLESB(api_evtparam_t* evt, uint64_t wwn);

#ifdef __cplusplus
} /* extern "C" */
#define QELAPI_STATIC_ASSERT(c, m) static_assert(c, m)
#else
#define QELAPI_STATIC_ASSERT(c, m) _Static_assert(c, m)
#endif

QELAPI_STATIC_ASSERT(sizeof(api_port_status_t) == 4, "port state is 32 bits");
QELAPI_STATIC_ASSERT(sizeof(api_ddm_t) == 64, "api_ddm_t size");
QELAPI_STATIC_ASSERT(sizeof(api_sfp_t) == 552, "api_sfp_t size");
QELAPI_STATIC_ASSERT(sizeof(api_FCPort_t) == 1248, "api_FCPort_t is 1248 bytes");
QELAPI_STATIC_ASSERT(offsetof(api_FCPort_t, position) == 0, "position first");
QELAPI_STATIC_ASSERT(sizeof(api_portLESB_t) == 192, "api_portLESB_t is 192 bytes");
QELAPI_STATIC_ASSERT(offsetof(api_portLESB_t, portText) == 0, "portText first");
QELAPI_STATIC_ASSERT(offsetof(api_iSCSIPort_t, iscsiName) == 0, "iSCSI name first");
QELAPI_STATIC_ASSERT(sizeof(api_evtparam_t) == 484, "api_evtparam_t is 484 bytes");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, cb_code) == 0, "cb_code offset");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, user) == 4, "user offset");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, addr) == 36, "addr offset");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, method) == 82, "method offset");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, inst_op) == 210, "inst_op offset");
QELAPI_STATIC_ASSERT(offsetof(api_evtparam_t, inst_param) == 226, "inst_param offset");
QELAPI_STATIC_ASSERT(sizeof(api_ipaddr_t) == 24, "api_ipaddr_t is 24 bytes");
QELAPI_STATIC_ASSERT(offsetof(api_ipaddr_t, ipv4_addr) == 4, "ipv4_addr offset");
QELAPI_STATIC_ASSERT(offsetof(api_ipaddr_t, ipv6_addr) == 8, "ipv6_addr offset");

#undef QELAPI_STATIC_ASSERT

#endif /* QELAPI_H */
