-- SPDX-License-Identifier: Apache-2.0
-- One shard: the orders whose number leaves the rest `shard` when it is divided by two.
CREATE EXTENSION bifun;
CREATE TABLE orders (number bigint NOT NULL, customer text NOT NULL, ordered date NOT NULL, amount numeric(12, 2) NOT NULL);
INSERT INTO orders
SELECT n, '  customer ' || n % 7 || ' ', date '2023-01-01' + (n % 700)::int, n % 1000 + 0.25
FROM generate_series(1, :rows) AS n WHERE n % 2 = :shard;
ANALYZE orders;
