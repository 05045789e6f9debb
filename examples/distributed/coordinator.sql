-- SPDX-License-Identifier: Apache-2.0
-- The server that is asked: it knows of the extension on the shards (`extensions`), so calls of its functions may be sent there, and it asks
-- both shards at once (`async_capable`).
CREATE EXTENSION bifun;
CREATE EXTENSION postgres_fdw;
CREATE SERVER shard_0 FOREIGN DATA WRAPPER postgres_fdw
    OPTIONS (host :'socket', port '5433', dbname 'postgres', extensions 'bifun', async_capable 'true');
CREATE SERVER shard_1 FOREIGN DATA WRAPPER postgres_fdw
    OPTIONS (host :'socket', port '5434', dbname 'postgres', extensions 'bifun', async_capable 'true');
CREATE USER MAPPING FOR CURRENT_USER SERVER shard_0;
CREATE USER MAPPING FOR CURRENT_USER SERVER shard_1;

CREATE TABLE orders (number bigint NOT NULL, customer text NOT NULL, ordered date NOT NULL, amount numeric(12, 2) NOT NULL)
    PARTITION BY LIST ((number % 2));
CREATE FOREIGN TABLE orders_0 PARTITION OF orders FOR VALUES IN (0) SERVER shard_0 OPTIONS (table_name 'orders');
CREATE FOREIGN TABLE orders_1 PARTITION OF orders FOR VALUES IN (1) SERVER shard_1 OPTIONS (table_name 'orders');
ANALYZE orders;

-- The same rows in a table of this server, to compare with.
CREATE TABLE orders_here AS TABLE orders;
ANALYZE orders_here;
